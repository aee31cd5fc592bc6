command "flash-rect"
set size 2 "1"
click 1 1 # trailing comment

   	
key r
key delete
