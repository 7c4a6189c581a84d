10 REM It knows the present alone, so the fields are reckoned, of a zone without summer time.
20 T = 1709251200
30 C = 0
40 N = 0
50 D = INT(T / 86400)
60 W = D - 7 * INT(D / 7)
70 S = T - 86400 * D
80 H = INT(S / 3600)
90 R = S - 1800 * INT(S / 1800)
100 F = 0
110 IF R = 0 AND H >= 6 AND H <= 21 AND W <> 2 AND W <> 3 THEN F = 1
120 C = C + F
130 T = T + 300
140 N = N + 1
150 IF N < 1000000 THEN GOTO 50
160 PRINT "ILE "; C
170 SYSTEM
