proc main {} {
    set station Z1
    set mode auto
    set a 0
    set b 0
    set c 0
    set n 0
    while 1 {
        if {$station eq "Z1"} {
            set station Z2
            incr a
        } else {
            if {$station eq "Z2"} {
                if {$mode eq "auto"} {
                    set station Z3
                } else {
                    set station Z1
                }
                incr b 2
            } else {
                set station Z1
                incr c 3
            }
        }
        incr n
        if {!($n < 1000000)} break
    }
    puts "STACJA $station"
    puts "A $a"
    puts "B $b"
    puts "C $c"
}
main
