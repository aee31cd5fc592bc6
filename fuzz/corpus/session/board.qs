# A small board: four pad shapes with holes joined by tracks with 45-degree bends, then a zoom
# box, a pan, and the design saved and loaded again. Run it with ./run.sh (pictures in out/).
unit mm
view -6 -6
zoom 18
grid 5
snap 0.5

# Round pads with round holes down the left edge.
command flash-circle
set diameter 2.4
set hole 1
set aperture 10
click 2 2
click 2 12
click 2 24

# Square pads on the right.
command flash-rect
set size 2.4 2.4
set hole 1
set aperture 11
click 34 2
click 34 12

# An obround pad with a slot-like rectangular hole.
command flash-obround
set size 4 2.2
set hole 1.6 0.6
set aperture 12
click 34 24

# An octagonal pad in the middle.
command flash-polygon
set diameter 3.2
set sides 8
set hole 1.2
set aperture 13
click 18 14

# Tracks on layer 2, each placed with one click per leg: bend mode 1 puts a 45-degree leg
# first and finishes straight.
command line
set layer 2
set width 0.6
set bend 1
click 2 2
click 18 14
key enter
click 18 14
click 34 2
key enter
click 2 12
click 9 12
click 34 24
key enter
click 2 24
set bend 2
click 34 12
dblclick 34 12

# A rectangle, a circle and a polygon on layer 3.
command rect
set layer 3
click 4 16
click 8 19
command circle
set width 0.3
click 24 -1
click 26 -1
command polygon
click 10 -3
click 16 -3
click 13 1
key enter

command select
move px 790 590

# Zoom into the octagon with a box, then pan with the right button.
command zoombox
drag 13 9 to 24 19
command select
move px 790 590
rdrag px 400 300 to px 250 220
move px 790 590

# Save the view, wander off, and load it back.
wheel up px 400 300
wheel up px 400 300 shift
move px 790 590

# Alt+1 fits the whole board into the window (the host's design gives the window's zoom-all
# hook its meaning).
alt1
