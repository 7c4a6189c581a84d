set add {lappend values $n}
set count {incr n}
set more {expr {$n < 1000000}}
set all {set whole [::tcl::mathop::+ {*}$values]}
set end {expr {$at == [llength $values]}}
set total {set sum [expr {$sum + [lindex $values $at]}]}
set next {incr at}
set values {}
set n 0
while 1 {
    eval "$add "
    eval "$count "
    if {![eval "$more "]} break
}
eval "$all "
set sum 0
set at 0
while 1 {
    if {[eval "$end "]} break
    eval "$total "
    eval "$next "
}
puts "RAZEM $whole"
puts "SUMA $sum"
