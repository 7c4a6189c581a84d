set append {set line "${name}przeplyw=125"}
set raise {set upper [string toupper $line]}
set seek {set place [string first "=12" $upper 0]}
set left {set name [string range $upper 0 [expr {$place - 1}]]}
set reckon {set length [expr {$n % 20 + 4}]}
set right {set name [string range $name end-[expr {$length - 1}] end]}
set total {set sum [expr {$sum + $place}]}
set count {incr n}
set more {expr {$n < 1000000}}
set name STACJA
set sum 0
set n 0
while 1 {
    eval "$append "
    eval "$raise "
    eval "$seek "
    eval "$left "
    eval "$reckon "
    eval "$right "
    eval "$total "
    eval "$count "
    if {![eval "$more "]} break
}
puts "NAZWA $name"
puts "SUMA $sum"
