#!/usr/bin/env python3
"""Writes the example board: a two-layer Gerber set with tracks, pads, a ground pour with
clearances and thermal reliefs, silkscreen, the outline and an Excellon drill file.
Run from anywhere; the files are written beside this script."""
import math
import os

HERE = os.path.dirname(os.path.abspath(__file__))
W, H = 60.0, 40.0  # board size, mm


def c(v):
    return str(int(round(v * 1e6)))


def xy(x, y):
    return "X%sY%s" % (c(x), c(y))


def header(function, extra=""):
    return ("%%TF.GenerationSoftware,qvis,example,1*%%\n%%TF.FileFunction,%s*%%\n"
            "%%FSLAX46Y46*%%\n%%MOMM*%%\nG75*\n%s" % (function, extra))


# Parts: (x, y) of each pad; a chip with two rows, resistors, a connector.
chip = [(20 + i * 1.27, 22) for i in range(8)] + [(20 + i * 1.27, 28) for i in range(8)]
resistors = [((8, 10 + 6 * i), (12, 10 + 6 * i)) for i in range(4)]
connector = [(52, 8 + i * 2.54) for i in range(8)]
vias = [(30, 12), (36, 15), (42, 30), (14, 33), (46, 20)]


def copper(top):
    g = header("Copper,L%d,%s" % ((1, "Top") if top else (2, "Bot")),
               "%AMTHERMAL*7,0,0,$1,$2,$3,45*%\n"
               "%ADD10C,0.25*%\n%ADD11C,0.5*%\n%ADD12R,0.6X1.6*%\n%ADD13R,1.2X1.4*%\n"
               "%ADD14O,1.7X2.0*%\n%ADD15C,1.2*%\n%ADD16THERMAL,2.2X1.6X0.4*%\n"
               "%ADD17C,2.2*%\n")
    if not top:
        # Ground pour over the whole board with clearances round every pad and via.
        g += "%TO.N,GND*%\nG36*\n" + xy(1, 1) + "D02*\nG01*\n" + xy(W - 1, 1) + "D01*\n"
        g += xy(W - 1, H - 1) + "D01*\n" + xy(1, H - 1) + "D01*\n" + xy(1, 1) + "D01*\nG37*\n%TD*%\n"
        g += "%LPC*%\nD17*\n"
        for (x, y) in vias[1:] + connector[1:]:
            g += xy(x, y) + "D03*\n"
        g += "D11*\n" + xy(2, 20) + "D02*\n" + xy(W - 2, 20) + "D01*\n"  # a cut through the pour
        g += "%LPD*%\nD16*\n" + xy(*vias[0]) + "D03*\n" + xy(*connector[0]) + "D03*\n"
    g += "D15*\n"
    for (x, y) in vias:
        g += xy(x, y) + "D03*\n"
    g += "D14*\n"
    for (x, y) in connector:
        g += xy(x, y) + "D03*\n"
    if top:
        g += "D12*\n"
        for (x, y) in chip:
            g += xy(x, y) + "D03*\n"
        g += "D13*\n"
        for a, b in resistors:
            g += xy(*a) + "D03*\n" + xy(*b) + "D03*\n"
        # Tracks: chip pins to the connector, with 45-degree bends and an arc.
        g += "D10*\n"
        for i in range(8):
            x, y = chip[i + 8]
            cx, cy = connector[i]
            g += xy(x, y) + "D02*\nG01*\n" + xy(x, y + 2 + i * 0.6) + "D01*\n"
            g += xy(cx - 6, y + 2 + i * 0.6) + "D01*\n" + xy(cx - 2, cy) + "D01*\n" + xy(cx, cy) + "D01*\n"
        g += "D11*\n"
        for i, (a, b) in enumerate(resistors):
            x, y = chip[i]
            g += xy(*b) + "D02*\nG01*\n" + xy(x - 3, b[1]) + "D01*\n"
            g += "G03*\n" + xy(x, b[1] + 3) + "I0J3000000D01*\nG01*\n" + xy(x, y) + "D01*\n"
    else:
        g += "D11*\n" + xy(*vias[1]) + "D02*\nG01*\n" + xy(*vias[2]) + "D01*\n"
        g += xy(*vias[3]) + "D02*\n" + xy(*vias[4]) + "D01*\n"
    return g + "M02*\n"


def silkscreen():
    g = header("Legend,Top", "%ADD10C,0.15*%\n")
    g += "D10*\n"
    # Outlines of the parts.
    g += xy(18.6, 20.6) + "D02*\nG01*\n" + xy(29.7, 20.6) + "D01*\n" + xy(29.7, 29.4) + "D01*\n"
    g += xy(18.6, 29.4) + "D01*\n" + xy(18.6, 20.6) + "D01*\n"
    g += xy(19.2, 25) + "D02*\nG02*\n" + xy(19.2, 25) + "I%sJ0D01*\nG01*\n" % c(0.6)  # pin 1 mark
    for a, b in resistors:
        g += xy(a[0] - 1.2, a[1] - 1.2) + "D02*\n" + xy(b[0] + 1.2, b[1] - 1.2) + "D01*\n"
        g += xy(b[0] + 1.2, b[1] + 1.2) + "D01*\n" + xy(a[0] - 1.2, a[1] + 1.2) + "D01*\n"
        g += xy(a[0] - 1.2, a[1] - 1.2) + "D01*\n"
    # "Q1" drawn in strokes.
    g += xy(20, 32) + "D02*\nG02*\n" + xy(20, 32) + "I%sJ0D01*\nG01*\n" % c(0.8)
    g += xy(20.4, 31.6) + "D02*\n" + xy(21.1, 30.9) + "D01*\n"
    g += xy(22.5, 30.9) + "D02*\n" + xy(22.5, 33.1) + "D01*\n" + xy(22, 32.6) + "D01*\n"
    return g + "M02*\n"


def outline():
    g = header("Profile,NP", "%ADD10C,0.1*%\n")
    r = 3.0
    g += "D10*\n" + xy(r, 0) + "D02*\nG01*\n" + xy(W - r, 0) + "D01*\n"
    g += "G03*\n" + xy(W, r) + "I0J%sD01*\nG01*\n" % c(r) + xy(W, H - r) + "D01*\n"
    g += "G03*\n" + xy(W - r, H) + "I-%sJ0D01*\nG01*\n" % c(r) + xy(r, H) + "D01*\n"
    g += "G03*\n" + xy(0, H - r) + "I0J-%sD01*\nG01*\n" % c(r) + xy(0, r) + "D01*\n"
    g += "G03*\n" + xy(r, 0) + "I%sJ0D01*\n" % c(r)
    return g + "M02*\n"


def drill():
    d = "M48\n; example board drill file\nMETRIC,TZ\nT1C0.600\nT2C1.000\nT3C3.200\n%\nG90\nG05\n"
    d += "T1\n" + "".join("X%.3fY%.3f\n" % v for v in vias)
    d += "T2\n" + "".join("X%.3fY%.3f\n" % v for v in connector)
    d += "T3\n" + "".join("X%.3fY%.3f\n" % v for v in [(4, 4), (W - 4, H - 4), (4, H - 4)])
    d += "X%.3fY%.3fG85X%.3fY%.3f\n" % (W - 8, 3, W - 4, 3)  # a slot
    return d + "M30\n"


FILES = {
    "board-F_Cu.gbr": copper(True),
    "board-B_Cu.gbr": copper(False),
    "board-F_Silk.gbr": silkscreen(),
    "board-Edge_Cuts.gbr": outline(),
    "board.drl": drill(),
}

for name, text in FILES.items():
    with open(os.path.join(HERE, name), "w") as f:
        f.write(text)
