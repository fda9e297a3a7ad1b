#!/usr/bin/env python3
"""Writes the CalculiX example decks of this folder: a bracket under load, a plate's
eigenfrequencies and a heated block. Units: mm, N, t, s (report them with --units mm-N-s).

    python3 examples/calculix/make_decks.py        # rewrites bracket/, plate/ and block/
"""
import os

HERE = os.path.dirname(os.path.abspath(__file__))


class Grid:
    """Nodes of a structured box mesh, numbered once even where two boxes share a face."""

    def __init__(self):
        self.nodes = {}  # (x, y, z) rounded -> number
        self.order = []

    def node(self, x, y, z):
        key = (round(x, 6), round(y, 6), round(z, 6))
        if key not in self.nodes:
            self.nodes[key] = len(self.order) + 1
            self.order.append(key)
        return self.nodes[key]


EDGES = [(0, 1), (1, 2), (2, 3), (3, 0), (4, 5), (5, 6), (6, 7), (7, 4), (0, 4), (1, 5), (2, 6), (3, 7)]


def hex_box(grid, x0, x1, nx, y0, y1, ny, z0, z1, nz, quadratic=False):
    """Eight-node (or twenty-node) bricks over a box; nodes in the solver's order."""
    elements = []
    for k in range(nz):
        for j in range(ny):
            for i in range(nx):
                xs = [x0 + (x1 - x0) * (i + d) / nx for d in (0, 1)]
                ys = [y0 + (y1 - y0) * (j + d) / ny for d in (0, 1)]
                zs = [z0 + (z1 - z0) * (k + d) / nz for d in (0, 1)]
                corners = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)]
                points = [(xs[a], ys[b], zs[c]) for a, b, c in corners]
                if quadratic:
                    points += [tuple((points[p][d] + points[q][d]) / 2 for d in range(3)) for p, q in EDGES]
                elements.append([grid.node(*p) for p in points])
    return elements


def write_nodes(out, grid):
    out.write("*NODE, NSET=NALL\n")
    for number, (x, y, z) in enumerate(grid.order, 1):
        out.write(f"{number}, {x:.6g}, {y:.6g}, {z:.6g}\n")


def write_elements(out, elements, first, etype, elset):
    out.write(f"*ELEMENT, TYPE={etype}, ELSET={elset}\n")
    for n, nodes in enumerate(elements, first):
        line = [str(n)] + [str(v) for v in nodes]
        # Sixteen numbers a line at most, as the solver reads them.
        while len(line) > 16:
            out.write(", ".join(line[:16]) + ",\n")
            line = line[16:]
        out.write(", ".join(line) + "\n")
    return first + len(elements)


def write_set(out, keyword, name, numbers):
    out.write(f"*{keyword}, {keyword}={name}\n")
    numbers = sorted(set(numbers))
    for i in range(0, len(numbers), 12):
        out.write(", ".join(str(v) for v in numbers[i:i + 12]) + "\n")


def bracket():
    grid = Grid()
    # A base plate of 80 x 40 x 8 mm and an upright of 8 x 40 x 60 mm on its left end.
    base = hex_box(grid, 0, 80, 20, 0, 40, 5, 0, 8, 2, quadratic=True)
    upright = hex_box(grid, 0, 8, 2, 0, 40, 5, 8, 68, 12, quadratic=True)
    fixed = [n for (x, y, z), n in grid.nodes.items() if z == 0 and x >= 50]
    top = [n for (x, y, z), n in grid.nodes.items() if z == 68]
    os.makedirs(os.path.join(HERE, "bracket"), exist_ok=True)
    with open(os.path.join(HERE, "bracket", "bracket.inp"), "w") as out:
        out.write("** A welded bracket: a steel base plate bolted down at its right end, an aluminium\n")
        out.write("** upright loaded at its top. Units: mm, N, t, s.\n*HEADING\nBracket under a side load\n")
        write_nodes(out, grid)
        first = write_elements(out, base, 1, "C3D20R", "BASE_PLATE")
        write_elements(out, upright, first, "C3D20R", "UPRIGHT")
        write_set(out, "NSET", "BOLTED", fixed)
        write_set(out, "NSET", "LOAD_EDGE", top)
        out.write("*MATERIAL, NAME=STEEL_S235\n*ELASTIC\n210000, 0.3\n*DENSITY\n7.85e-9\n*EXPANSION\n1.2e-5\n")
        out.write("*PLASTIC\n235, 0\n280, 0.02\n360, 0.2\n")
        out.write("*MATERIAL, NAME=ALUMINIUM_6061\n*ELASTIC\n69000, 0.33\n*DENSITY\n2.7e-9\n*EXPANSION\n2.3e-5\n")
        out.write("*SOLID SECTION, ELSET=BASE_PLATE, MATERIAL=STEEL_S235\n")
        out.write("*SOLID SECTION, ELSET=UPRIGHT, MATERIAL=ALUMINIUM_6061\n")
        out.write("*BOUNDARY\nBOLTED, 1, 3\n")
        out.write("*STEP\n*STATIC\n*CLOAD\n")
        # 800 N in x spread over the top edge's nodes.
        out.write(f"LOAD_EDGE, 1, {800.0 / len(top):.6g}\n")
        out.write("*DLOAD\nBASE_PLATE, GRAV, 9810., 0., 0., -1.\nUPRIGHT, GRAV, 9810., 0., 0., -1.\n")
        out.write("*NODE FILE\nU, RF\n*EL FILE\nS, E\n*NODE PRINT, NSET=BOLTED, TOTALS=ONLY\nRF\n*END STEP\n")


def plate():
    grid = Grid()
    # A cantilevered aluminium plate of 200 x 100 x 2 mm: eight-node shells.
    nx, ny, lx, ly = 20, 10, 200.0, 100.0
    elements = []
    for j in range(ny):
        for i in range(nx):
            x0, x1 = lx * i / nx, lx * (i + 1) / nx
            y0, y1 = ly * j / ny, ly * (j + 1) / ny
            xm, ym = (x0 + x1) / 2, (y0 + y1) / 2
            pts = [(x0, y0), (x1, y0), (x1, y1), (x0, y1), (xm, y0), (x1, ym), (xm, y1), (x0, ym)]
            elements.append([grid.node(x, y, 0) for x, y in pts])
    clamped = [n for (x, y, z), n in grid.nodes.items() if x == 0]
    os.makedirs(os.path.join(HERE, "plate"), exist_ok=True)
    with open(os.path.join(HERE, "plate", "plate.inp"), "w") as out:
        out.write("** A cantilevered plate: its first eigenfrequencies and mode shapes. Units: mm, N, t, s.\n")
        out.write("*HEADING\nPlate eigenfrequencies\n")
        write_nodes(out, grid)
        write_elements(out, elements, 1, "S8R", "PLATE")
        write_set(out, "NSET", "CLAMPED", clamped)
        out.write("*MATERIAL, NAME=ALUMINIUM\n*ELASTIC\n70000, 0.33\n*DENSITY\n2.7e-9\n")
        out.write("*SHELL SECTION, ELSET=PLATE, MATERIAL=ALUMINIUM\n2.\n")
        out.write("*BOUNDARY\nCLAMPED, 1, 6\n")
        out.write("*STEP\n*FREQUENCY\n6\n*NODE FILE\nU\n*END STEP\n")


def block():
    grid = Grid()
    # A copper block of 40 x 40 x 20 mm on a cold plate, heated from a patch on its top and
    # cooled by the air around it.
    elements = hex_box(grid, 0, 40, 10, 0, 40, 10, 0, 20, 5)
    cold = [n for (x, y, z), n in grid.nodes.items() if z == 0]
    heated = []
    sides = []
    for k in range(5):
        for j in range(10):
            for i in range(10):
                e = 1 + i + 10 * j + 100 * k
                if k == 4 and 3 <= i <= 6 and 3 <= j <= 6:
                    heated.append(e)
                if i == 0 or i == 9 or j == 0 or j == 9:
                    sides.append(e)
    os.makedirs(os.path.join(HERE, "block"), exist_ok=True)
    with open(os.path.join(HERE, "block", "block.inp"), "w") as out:
        out.write("** A heated copper block, steady state. Units: mm, N, t, s, K (heat in mW).\n")
        out.write("*HEADING\nHeated block\n")
        write_nodes(out, grid)
        write_elements(out, elements, 1, "C3D8", "BLOCK")
        write_set(out, "NSET", "COLD_PLATE", cold)
        write_set(out, "ELSET", "HEATED", heated)
        out.write("*MATERIAL, NAME=COPPER\n*ELASTIC\n117000, 0.34\n*DENSITY\n8.96e-9\n")
        out.write("*CONDUCTIVITY\n385.\n*SPECIFIC HEAT\n3.85e8\n*EXPANSION\n1.7e-5\n")
        out.write("*SOLID SECTION, ELSET=BLOCK, MATERIAL=COPPER\n")
        out.write("*INITIAL CONDITIONS, TYPE=TEMPERATURE\nNALL, 293.\n")
        out.write("*STEP\n*HEAT TRANSFER, STEADY STATE\n1., 1.\n")
        out.write("*BOUNDARY\nCOLD_PLATE, 11, 11, 293.\n")
        # 50 W/cm^2 = 500 mW/mm^2 on the patch on the top face (face 2 of a brick is its top).
        out.write("*DFLUX\nHEATED, S2, 500.\n")
        out.write("*NODE FILE\nNT\n*EL FILE\nHFL\n*END STEP\n")


if __name__ == "__main__":
    bracket()
    plate()
    block()
