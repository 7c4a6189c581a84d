set reckon {set sum [expr {$sum + $count * $times}]}
set leave {return $sum}
set call {set sum [add $sum $n 2]}
set count {incr n}
set more {expr {$n < 1000000}}
proc add {sum count times} {
    eval "$::reckon "
    eval "$::leave "
}
set sum 0
set n 0
while 1 {
    eval "$call "
    eval "$count "
    if {![eval "$more "]} break
}
puts "SUMA $sum"
