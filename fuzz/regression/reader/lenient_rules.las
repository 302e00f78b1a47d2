~Version
VERS. 2.0 : v
WRAP. NO : w
~Well
STRT.DD/MM/YYYY-HH:MM:SS 03/09/2021-00:00:00 : Start
NULL. -999.25 : n
~Curve
DEPT.M : d
.M : a
DESC. : c {S}
# DEPT X DESC Y Z
~A
1 - "two words" 3 4
2 ERR "runs
 over" 5
3 12.5ft x
"open
~A2
1,2,3
