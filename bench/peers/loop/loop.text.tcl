set copy {set m $n}
set reckon {set n [expr {$m * 1.01 + 1 - $m * 0.01}]}
set more {expr {$n < 1000000}}
set n 0
while 1 {
    eval "$copy "
    eval "$reckon "
    if {![eval "$more "]} break
}
puts "N $n"
