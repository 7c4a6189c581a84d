proc main {} {
    set name STACJA
    set sum 0
    set n 0
    while 1 {
        set line "${name}przeplyw=125"
        set upper [string toupper $line]
        set place [string first "=12" $upper 0]
        set name [string range $upper 0 [expr {$place - 1}]]
        set length [expr {$n % 20 + 4}]
        set name [string range $name end-[expr {$length - 1}] end]
        set sum [expr {$sum + $place}]
        incr n
        if {!($n < 1000000)} break
    }
    puts "NAZWA $name"
    puts "SUMA $sum"
}
main
