_kalvex_run_words() {
    kalvex-run --language 2>/dev/null | sed -n 's/^  \([^ ]*\).*/\1/p'
}
