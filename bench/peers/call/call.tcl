proc add {sum count times} {
    set sum [expr {$sum + $count * $times}]
    return $sum
}
proc main {} {
    set sum 0
    set n 0
    while 1 {
        set sum [add $sum $n 2]
        incr n
        if {!($n < 1000000)} break
    }
    puts "SUMA $sum"
}
main
