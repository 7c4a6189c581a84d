_kalvex_run_words() {
    local -a known=(${(f)"$(kalvex-run --language 2>/dev/null | sed -n 's/^  \([^ ]*\).*/\1/p')"})
    compadd -a known
}
