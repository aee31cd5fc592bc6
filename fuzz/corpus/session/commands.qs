unit inch
view -1 -1
zoom 40
grid 0.1 0.2
snap 0.05
show grid on
show origin off
background 102030
command line
set width 0.02
set endcap square
set bend 2
click 0 0
move 1 0.5
click 1 0.5
dblclick 1.5 1.5
key esc
command arc
click 0 0
click 1 0
click 0 1
command circle3
click 0 0
click 1 1
click 2 0
command polygon
click 0 0
click 1 0
click 1 1
key backspace
key enter
command flash-polygon
set sides 6
set diameter 0.3
set hole 0.1 0.05
click 0.5 0.5
command zoombox
drag 0 0 to 2 2 steps 3
rdrag px 10 10 to px 40 30
rclick px 5 5
wheel up px 32 24 shift
wheel down px 0 0
echo done
