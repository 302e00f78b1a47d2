~Version
 VERS. 2.0 :
~Well
 MNEM:value : colon in mnemonic
