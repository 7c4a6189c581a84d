function __kalvex_run_words
    kalvex-run --language 2>/dev/null | string match -r -g '^  (\S+)'
end
