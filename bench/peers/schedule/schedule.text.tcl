set parts {scan [clock format $time -format "%S %M %H %u"] "%d %d %d %d" second minute hour weekday}
set test {expr {$second == 0 && $minute % 30 == 0 && $hour >= 6 && $hour <= 21 && $weekday <= 5}}
set check {set fits [check $time]}
set total {set count [expr {$count + $fits}]}
set later {incr time 300}
set step {incr n}
set more {expr {$n < 1000000}}
proc check {time} {
    eval "$::parts "
    return [eval "$::test "]
}
set time 1709251200
set count 0
set n 0
while 1 {
    eval "$check "
    eval "$total "
    eval "$later "
    eval "$step "
    if {![eval "$more "]} break
}
puts "ILE $count"
