proc main {} {
    set values {}
    set n 0
    while 1 {
        lappend values $n
        incr n
        if {!($n < 1000000)} break
    }
    set whole [::tcl::mathop::+ {*}$values]
    set sum 0
    set at 0
    while 1 {
        if {$at == [llength $values]} break
        set sum [expr {$sum + [lindex $values $at]}]
        incr at
    }
    puts "RAZEM $whole"
    puts "SUMA $sum"
}
main
