window 1 1
zoom 0
zoom -1
zoom nan
view 1e308 -1e308
grid 0
snap 1e-300
command rect
set drawtype outline
set size 1
click px 99999 -99999
expect nothing
