~Version
 VERS.  3.0 : CWLS LOG ASCII STANDARD -VERSION 3.0
 WRAP.  NO : ONE LINE PER DEPTH STEP
 DLM .  COMMA : DELIMITING CHARACTER
~Well
 STRT.M 1000 :
 STOP.M 1000.5 :
 STEP.M 0.5 :
~Core_Parameter
 C_TOP .M   1000.2 : Core top {F}
~Core_Definition
 DEPT.M  : Depth {F}
 LITH.   : Lithology {S}
~Core_Data[1] | Core_Definition
 1000.25, "fine sand"
 1000.5,,
~Log_Definition
 DEPT.M  : Depth {F}
 GR  .GAPI : Gamma ray {F} | RUNS
~Log_Data | Log_Definition
 1000,45.25
 1000.5 ; 50
