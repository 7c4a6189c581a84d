proc main {} {
    set n 0
    while 1 {
        set m $n
        set n [expr {$m * 1.01 + 1 - $m * 0.01}]
        if {!($n < 1000000)} break
    }
    puts "N $n"
}
main
