# a comment in the first column
   \ # a comment behind blanks and a backslash
~V
 VERS.2.0 : version written against the period
 WRAP.Y : wrapped, flag behind the period
~W
 STEP. 0.1 :
~C
 DEPT.M :
 A.  :
 B.  :
~A
 1.0 2.0
 3.0
 4.0
~P
 X. 1 :
