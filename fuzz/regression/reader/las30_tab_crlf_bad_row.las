~Version
 VERS. 3.0 :
 DLM . TAB :
~Well
~Curve
 DEPT.M : {F}
 NAME. : {S}
~ASCII
 1	one
 2		two
 3 three
