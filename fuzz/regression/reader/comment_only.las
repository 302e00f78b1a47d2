#only a comment

   
#
