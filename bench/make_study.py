#!/usr/bin/env python3
"""Writes a large study file with pictures of its own, for timing zpreport.

    bench/make_study.py OUT_DIR [--bodies N] [--materials N] [--images N] [--loads N] [--plots N]
                        [--shared]

The study is the sample's model and study with N solid bodies (each with its own JPEG),
N materials (a JPEG picture and two PNG curves each, five properties, three bodies), N
images placed in the study results, N loads (a JPEG each and one PNG curve, every third one
with two curves and every fifth with three) with a fixture for every ten loads, and N result
plots (a JPEG each, every fourth without a range). Every picture is a file of its own: the sample's
pictures with a comment (JPEG) or a text chunk (PNG) that tells them apart, so that no two
files hold the same bytes. --shared points every body, material and image at one file of
each kind instead.
"""
import argparse
import json
import os
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
PICTURES = os.path.join(HERE, "..", "examples", "bracket", "pictures")


def read(name):
    with open(os.path.join(PICTURES, name), "rb") as f:
        return f.read()


def tagged_jpeg(base, text):
    """The JPEG with a comment segment after its start marker."""
    payload = text.encode()
    return base[:2] + b"\xff\xfe" + struct.pack(">H", len(payload) + 2) + payload + base[2:]


def tagged_png(base, text):
    """The PNG with a tEXt chunk after its header chunk."""
    payload = b"Comment\0" + text.encode()
    chunk = struct.pack(">I", len(payload)) + b"tEXt" + payload
    chunk += struct.pack(">I", zlib.crc32(b"tEXt" + payload) & 0xFFFFFFFF)
    ihdr_end = 8 + 8 + 13 + 4
    return base[:ihdr_end] + chunk + base[ihdr_end:]


class Pictures:
    def __init__(self, folder, shared):
        self.folder = folder
        self.shared = shared
        self.made = set()
        os.makedirs(os.path.join(folder, "pictures"), exist_ok=True)

    def write(self, kind, name, make):
        rel = "pictures/%s" % (kind if self.shared else name)
        if rel not in self.made:
            with open(os.path.join(self.folder, rel), "wb") as f:
                f.write(make())
            self.made.add(rel)
        return rel


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("out")
    ap.add_argument("--bodies", type=int, default=0)
    ap.add_argument("--materials", type=int, default=0)
    ap.add_argument("--images", type=int, default=0)
    ap.add_argument("--loads", type=int, default=0)
    ap.add_argument("--plots", type=int, default=0)
    ap.add_argument("--shared", action="store_true", help="one picture file of each kind for all")
    args = ap.parse_args()

    body_jpeg = read("body-gusset.jpg")
    material_jpeg = read("material-steel.jpg")
    curve_png = read("curve-steel.png")
    plot_jpeg = read("plot-stress.jpg")
    pics = Pictures(args.out, args.shared)

    model = pics.write("model.jpg", "model.jpg", lambda: read("model.jpg"))
    study = {
        "format": 1,
        "model": {"name": "Large", "configuration": "Default", "picture": model},
        "study": {"name": "Static 1", "type": 0, "typeText": "Static", "modelKind": 3},
        "units": [["Unit system:", "SI (MKS)"], ["Length/Displacement", "mm"]],
    }
    if args.bodies:
        bodies = []
        for n in range(1, args.bodies + 1):
            pic = pics.write("body.jpg", "body-%d.jpg" % n, lambda: tagged_jpeg(body_jpeg, "body %d" % n))
            bodies.append({
                "values": ["Body %d" % n, "Solid Body",
                           "Mass:0.3792 kg\nVolume:4.8e-05 m^3\nDensity:7,900 kg/m^3\nWeight:3.7162 N",
                           "Projects\\Large\\Large.mdl\nNov 20 09:12:44 2026"],
                "picture": pic})
        study["bodies"] = {"solids": {
            "headings": ["Document Name and Reference", "Treated As", "Volumetric Properties",
                         "Document Path/Date Modified"],
            "bodies": bodies}}
    if args.materials:
        materials = []
        for n in range(1, args.materials + 1):
            pic = pics.write("material.jpg", "material-%d.jpg" % n,
                             lambda: tagged_jpeg(material_jpeg, "material %d" % n))
            curves = []
            for c in (1, 2):
                curve = pics.write("curve.png", "curve-%d-%d.png" % (n, c),
                                   lambda: tagged_png(curve_png, "curve %d of material %d" % (c, n)))
                curves.append({"label": "Curve %d" % c, "picture": curve})
            materials.append({
                "name": "Material %d" % n, "picture": pic,
                "bodies": ["Body %d" % (3 * n - 2), "Body %d" % (3 * n - 1), "Body %d" % (3 * n)],
                "properties": [["Name:", "Material %d" % n], ["Model type:", "Linear Elastic Isotropic"],
                               ["Yield strength:", "3.51571e+08 N/m^2"],
                               ["Tensile strength:", "4.20507e+08 N/m^2"],
                               ["Elastic modulus:", "2e+11 N/m^2"]],
                "curves": curves})
        study["materials"] = materials
    if args.images:
        images = []
        for n in range(1, args.images + 1):
            pic = pics.write("plot.jpg", "plot-%d.jpg" % n, lambda: tagged_jpeg(plot_jpeg, "plot %d" % n))
            images.append({"name": "Plot %d" % n, "picture": pic, "section": "studyResults",
                           "caption": "Plot %d" % n, "comment": "Comment on plot %d." % n})
        study["images"] = images

    if args.loads:
        def curve(n, c):
            return {"label": "Curve %d of load %d" % (c, n),
                    "picture": pics.write("curve.png", "load-curve-%d-%d.png" % (n, c),
                                          lambda: tagged_png(curve_png, "curve %d of load %d" % (c, n)))}
        loads, fixtures = [], []
        for n in range(1, args.loads + 1):
            count = 3 if n % 5 == 0 else 2 if n % 3 == 0 else 1
            loads.append({"name": "Force-%d" % n,
                          "details": "Entities:\t1 face(s)\nType:\tApply normal force\nValue:\t%d N" % (10 * n),
                          "picture": pics.write("load.jpg", "load-%d.jpg" % n,
                                                lambda: tagged_jpeg(body_jpeg, "load %d" % n)),
                          "curves": [curve(n, c) for c in range(1, count + 1)]})
            if n % 10 == 1:
                fixtures.append({"name": "Fixed-%d" % n, "details": "Entities:\t1 face(s)\nType:\tFixed Geometry",
                                 "picture": pics.write("fixture.jpg", "fixture-%d.jpg" % n,
                                                       lambda: tagged_jpeg(body_jpeg, "fixture %d" % n)),
                                 "resultantForces": {
                                     "forces": ["Reaction force(N)", "0.01", "-%d" % n, "0", "%d" % n],
                                     "moments": ["Reaction Moment(N.m)", "0", "0", "0", "0"]}})
        study["fixtures"] = fixtures
        study["loads"] = loads
    if args.plots:
        plots = []
        for n in range(1, args.plots + 1):
            ranged = n % 4 != 0
            plots.append({"name": "Stress%d" % n, "type": "VON: von Mises Stress",
                          "min": "2.04e+06 N/m^2\nNode: %d" % n if ranged else "-",
                          "max": "1.68e+08 N/m^2\nNode: %d" % (n + 1) if ranged else "-",
                          "image": "Large-Static 1-Stress-Stress%d" % n,
                          "picture": pics.write("result.jpg", "result-%d.jpg" % n,
                                                lambda: tagged_jpeg(plot_jpeg, "result %d" % n))})
        study["results"] = {"plots": plots}

    with open(os.path.join(args.out, "study.json"), "w") as f:
        json.dump(study, f, indent=1)
        f.write("\n")


if __name__ == "__main__":
    main()
