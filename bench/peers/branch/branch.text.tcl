set first {expr {$station eq "Z1"}}
set second {expr {$station eq "Z2"}}
set automatic {expr {$mode eq "auto"}}
set to1 {set station Z1}
set to2 {set station Z2}
set to3 {set station Z3}
set add1 {incr a}
set add2 {incr b 2}
set add3 {incr c 3}
set count {incr n}
set more {expr {$n < 1000000}}
set station Z1
set mode auto
set a 0
set b 0
set c 0
set n 0
while 1 {
    if {[eval "$first "]} {
        eval "$to2 "
        eval "$add1 "
    } else {
        if {[eval "$second "]} {
            if {[eval "$automatic "]} {
                eval "$to3 "
            } else {
                eval "$to1 "
            }
            eval "$add2 "
        } else {
            eval "$to1 "
            eval "$add3 "
        }
    }
    eval "$count "
    if {![eval "$more "]} break
}
puts "STACJA $station"
puts "A $a"
puts "B $b"
puts "C $c"
