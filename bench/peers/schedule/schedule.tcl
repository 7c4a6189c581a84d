proc check {time} {
    scan [clock format $time -format "%S %M %H %u"] "%d %d %d %d" second minute hour weekday
    return [expr {$second == 0 && $minute % 30 == 0 && $hour >= 6 && $hour <= 21 && $weekday <= 5}]
}
proc main {} {
    set time 1709251200
    set count 0
    set n 0
    while 1 {
        set fits [check $time]
        set count [expr {$count + $fits}]
        incr time 300
        incr n
        if {!($n < 1000000)} break
    }
    puts "ILE $count"
}
main
