#!/usr/bin/env python3
"""Writes the readable OOXML source of the study report template.

Usage: scripts/gen-study-template.py [--design | --motion] [output-folder]
Default output: templates/SimulationReportTemplate_2007.dotx, with --design the
design-study template templates/SimulationReportTemplate_DStudy_2007.dotx, with --motion the
motion-study template templates/simulationreporttemplate_mstudy_2003.dotx (both take styles,
theme and settings from the study template's folder).

The XML under templates/ is what the build zips and what is reviewed; this
script only saves typing when the layout changes. Run it, look at the diff,
and commit both.
"""
import os
import sys
from xml.sax.saxutils import escape

W_NS = "http://schemas.openxmlformats.org/wordprocessingml/2006/main"
R_NS = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"

# ---------------------------------------------------------------- palette ---
NAVY = "1F3864"       # section heading bars, headings
LABEL_FILL = "D9E2F3"  # column heading rows of data tables
BAND_FILL = "EEF2F8"   # label rows inside a block (forces, curves)
KEY_FILL = "F2F5FA"    # label column of label/value tables
GRID = "A6A6A6"        # thin inner borders
FONT = "Arial"

# Text width: A4 with 2 cm side margins (the narrower of A4 and Letter).
TEXT_W = 9638
CELL_MAR = 108
NEST_W = TEXT_W - 2 * CELL_MAR   # 9422: a table nested in a section cell


# ------------------------------------------------------------- tiny tree ---
class E:
    def __init__(self, tag, attrs=None, children=None, text=None):
        self.tag = tag
        self.attrs = attrs or {}
        self.children = [c for c in (children or []) if c is not None]
        self.text = text

    def render(self, ind=0):
        pad = "  " * ind
        a = "".join(f' {k}="{escape(str(v), {chr(34): "&quot;"})}"' for k, v in self.attrs.items())
        if self.text is not None:
            return f"{pad}<{self.tag}{a}>{escape(self.text)}</{self.tag}>\n"
        if not self.children:
            return f"{pad}<{self.tag}{a}/>\n"
        inner = "".join(c.render(ind + 1) for c in self.children)
        return f"{pad}<{self.tag}{a}>\n{inner}{pad}</{self.tag}>\n"


def w(tag, attrs=None, *children, text=None):
    at = {}
    for k, v in (attrs or {}).items():
        at[k if ":" in k else "w:" + k] = v
    return E("w:" + tag, at, list(children), text)


# ------------------------------------------------------------------ runs ---
def rpr(bold=False, italic=False, color=None, size=None, caps=False):
    kids = []
    if bold:
        kids.append(w("b"))
    if italic:
        kids.append(w("i"))
    if caps:
        kids.append(w("caps"))
    if color:
        kids.append(w("color", {"val": color}))
    if size:
        kids.append(w("sz", {"val": size}))
        kids.append(w("szCs", {"val": size}))
    return w("rPr", None, *kids) if kids else None


def r(text, **fmt):
    t = w("t", {"xml:space": "preserve"} if (" " in text) else None, text=text)
    return w("r", None, rpr(**fmt), t)


def p(*runs, style=None, jc=None, before=None, after=None, keep=False,
      mark=None, page_break_before=False, tabs=None, ind=None):
    ppr = []
    if style:
        ppr.append(w("pStyle", {"val": style}))
    if keep:
        ppr.append(w("keepNext"))
    if page_break_before:
        ppr.append(w("pageBreakBefore"))
    if tabs:
        ppr.append(w("tabs", None, *[w("tab", t) for t in tabs]))
    if before is not None or after is not None:
        sp = {}
        if before is not None:
            sp["before"] = before
        if after is not None:
            sp["after"] = after
        ppr.append(w("spacing", sp))
    if ind:
        ppr.append(w("ind", ind))
    if jc:
        ppr.append(w("jc", {"val": jc}))
    if mark is not None:
        ppr.append(mark)
    kids = []
    if ppr:
        kids.append(w("pPr", None, *ppr))
    for x in runs:
        kids.append(r(x) if isinstance(x, str) else x)
    return w("p", None, *kids)


def spacer():
    """An empty paragraph of almost no height: keeps two tables apart."""
    return p(style="ZPSpacer")


# ---------------------------------------------------------------- tables ---
def borders(kind, color=GRID, sz=4, outer=None, outer_sz=None):
    names = ["top", "left", "bottom", "right", "insideH", "insideV"]
    kids = []
    for n in names:
        if kind == "none":
            kids.append(w(n, {"val": "nil"}))
        else:
            c, s = color, sz
            if outer and n in ("top", "left", "bottom", "right"):
                c, s = outer, outer_sz or sz
            kids.append(w(n, {"val": "single", "sz": s, "space": "0", "color": c}))
    return w("tblBorders", None, *kids)


def tc(width, *content, fill=None, span=None, valign=None, nowrap=False, no_border=None):
    pr = [w("tcW", {"w": width, "type": "dxa"})]
    if span:
        pr.append(w("gridSpan", {"val": span}))
    if no_border:
        pr.append(w("tcBorders", None, *[w(n, {"val": "nil"}) for n in no_border]))
    if fill:
        pr.append(w("shd", {"val": "clear", "color": "auto", "fill": fill}))
    if nowrap:
        pr.append(w("noWrap"))
    if valign:
        pr.append(w("vAlign", {"val": valign}))
    body = list(content) or [p()]
    if body[-1].tag != "w:p":
        body.append(p(style="ZPSpacer"))
    return w("tc", None, w("tcPr", None, *pr), *body)


def tr(*cells, header=False, cant_split=None):
    # Only heading rows are kept on one page: a body row may grow taller than
    # a page (pictures, many property rows), and Word clips such a row.
    if cant_split is None:
        cant_split = header
    pr = []
    if cant_split:
        pr.append(w("cantSplit"))
    if header:
        pr.append(w("tblHeader"))
    kids = [w("trPr", None, *pr)] if pr else []
    return w("tr", None, *kids, *cells)


def tbl(grid, rows, kind="grid", width_pct=True, mar=CELL_MAR, outer=None, outer_sz=None,
        jc=None, style=None):
    pr = []
    if style:
        pr.append(w("tblStyle", {"val": style}))
    if width_pct:
        pr.append(w("tblW", {"w": 5000, "type": "pct"}))
    else:
        pr.append(w("tblW", {"w": sum(grid), "type": "dxa"}))
    if jc:
        pr.append(w("jc", {"val": jc}))
    pr.append(borders(kind, outer=outer, outer_sz=outer_sz))
    pr.append(w("tblLayout", {"type": "fixed"}))
    pr.append(w("tblCellMar", None,
                w("top", {"w": 43, "type": "dxa"}),
                w("left", {"w": mar, "type": "dxa"}),
                w("bottom", {"w": 43, "type": "dxa"}),
                w("right", {"w": mar, "type": "dxa"})))
    pr.append(w("tblLook", {"val": "04A0", "firstRow": 1, "lastRow": 0, "firstColumn": 1,
                            "lastColumn": 0, "noHBand": 0, "noVBand": 1}))
    g = w("tblGrid", None, *[w("gridCol", {"w": c}) for c in grid])
    return w("tbl", None, w("tblPr", None, *pr), g, *rows)


def split(total, parts):
    """Column widths in proportion to parts, summing to total."""
    s = sum(parts)
    cols = [total * x // s for x in parts]
    cols[-1] += total - sum(cols)
    return cols


# Cell paragraphs of data tables.
def th(text, keep=False):
    return p(text, style="ZPTableHeading", keep=keep)


def td(text="", jc=None, keep=False):
    return p(text, style="ZPTableText", jc=jc, keep=keep) if text else p(style="ZPTableText", jc=jc, keep=keep)


def pic(text):
    return p(text, style="ZPTableText", jc="center")


def caption(text):
    return p(text, style="Caption", jc="center")


def heading_row(grid, texts, keep=False):
    return tr(*[tc(c, th(t, keep), fill=LABEL_FILL) for c, t in zip(grid, texts)], header=True)


def value_row(grid, texts, keep=False):
    """keep: the row stays whole and on the page of the row below it."""
    return tr(*[tc(c, td(t, keep=keep)) for c, t in zip(grid, texts)], cant_split=True if keep else None)


def data_table(width, parts, head, values, extra_rows=()):
    g = split(width, parts)
    rows = [heading_row(g, head)]
    if values is not None:
        rows.append(value_row(g, values))
    rows.extend(extra_rows(g) if callable(extra_rows) else extra_rows)
    return tbl(g, rows)


def key_value_table(width, key, value, parts=(2, 3)):
    """Two columns: a shaded label cell and a value cell; one row."""
    g = split(width, parts)
    return tbl(g, [tr(tc(g[0], td(key), fill=KEY_FILL), tc(g[1], td(value)))])


def titled(table, title_tag):
    """A table whose first row holds its Heading 2 title, spanning every column.

    The title row has no borders but the line under it, so it reads as a heading above the
    table; being part of the table, it goes with it when a writer removes the table, and
    it keeps the table apart from whatever stands above it.
    """
    grid = [int(c.attrs["w:w"]) for c in table.children[1].children]
    cell = tc(sum(grid), p(title_tag, style="Heading2"), span=len(grid) if len(grid) > 1 else None,
              no_border=("top", "left", "right"))
    rows = table.children[2:]
    table.children[2:] = [tr(cell, header=True)] + rows
    return table


def entity_table(width, tag):
    """Target of the label/value layout of an entity's details: tag in cell 1."""
    g = split(width, (9, 11))
    return tbl(g, [tr(tc(g[0], td(tag), fill=KEY_FILL), tc(g[1], td()))])


# ---------------------------------------------------------------- sections ---
def section(header_tag, body, content_tag=None, comment_tags=None, first_body=None):
    """One section: a one-column table.

    Row 1: heading cell (Heading 1 paragraph holding the Header_ tag).
    Row 2: the writer's content (nested tables and paragraphs), if any.
    Last row: images place (Content_ tag) and comment block.
    """
    rows = [tr(tc(TEXT_W, p(r(header_tag, color="FFFFFF"), style="Heading1"),
                  fill=NAVY), header=False)]
    if body:
        rows.append(tr(tc(TEXT_W, *body), cant_split=False))
    if content_tag:
        label_tag, comments_tag = comment_tags
        last = []
        if first_body:
            last.extend(first_body)
        last.append(p(content_tag, style="ZPContentPlace"))
        last.append(p(label_tag, style="ZPCommentLabel"))
        # the comment paragraph's mark is tiny, so that a row emptied of its
        # comment block is only a thin line
        last.append(p(comments_tag, style="ZPComment",
                      mark=w("rPr", None, w("sz", {"val": 4}), w("szCs", {"val": 4}))))
        rows.append(tr(tc(TEXT_W, *last), cant_split=False))
    return tbl([TEXT_W], rows, kind="grid", outer=NAVY, outer_sz=8)


def h2(text):
    return p(text, style="Heading2")


def blank():
    return p()


def sec_description():
    return section("<Header_Description/>",
                   [p("<Content_Description/>")])


def sec_assumptions():
    g = split(NEST_W, (1, 1))
    cmp = tbl(g, [
        tr(tc(g[0], pic("<Assumptions_CompareImage1/>")), tc(g[1], pic("<Assumptions_CompareImage2/>"))),
        tr(tc(g[0], caption("<Assumption_Compare_Caption1/>")), tc(g[1], caption("<Assumption_Compare_Caption2/>"))),
    ], kind="none")
    return section("<Header_Assumptions/>", None, "<Content_Assumption/>",
                   ("<Label_CommentsAssumption/>", "<Comments_Assumption/>"), first_body=[cmp, spacer()])


def body_table(label_tag, heads, values_first_cell, values_rest, parts):
    """Model information: one table per kind of body."""
    g = split(NEST_W, parts)
    n = len(g)
    rows = [
        tr(tc(NEST_W, p(label_tag, style="ZPTableHeading"), fill=BAND_FILL, span=n) if n > 1
           else tc(NEST_W, p(label_tag, style="ZPTableHeading"), fill=BAND_FILL)),
        heading_row(g, heads),
        tr(tc(g[0], *values_first_cell), *[tc(c, *(v if isinstance(v, list) else [td(v)]))
                                            for c, v in zip(g[1:], values_rest)]),
    ]
    return tbl(g, rows)


def sec_model_information():
    info = tbl(split(NEST_W, (2, 5)), [
        tr(tc(split(NEST_W, (2, 5))[0], td("<Label_ ModelInfo_ModelName/>"), fill=KEY_FILL),
           tc(split(NEST_W, (2, 5))[1], td("<ModelName_ ModelInformation/>"))),
        tr(tc(split(NEST_W, (2, 5))[0], td("<Label_ ModelInfo_ConfigName/>"), fill=KEY_FILL),
           tc(split(NEST_W, (2, 5))[1], td("<ConfigName_ ModelInformation/>"))),
    ])
    parts4 = (3, 2, 4, 3)
    solids = body_table("<Label_ ModelInfo_SolidBodies/>",
                        ["<L_ MdInf_SldBd_Nm/>", "<L_MdIn_SldBd_Tr/>", "<L_MdInf_SldBd_VolProp/>", "<L_MdIn_SldBd_DtMd/>"],
                        [td("<MdInf_SldBd_Nm/>"), pic("<MdInf_SldBd_Image/>")],
                        ["<MdIn_SldBd_Tr/>", "<MdInf_SldBd_VolProp/>", "<MdIn_SldBd_DtMd/>"], parts4)
    shells = body_table("<Label_ ModelInfo_ShellBodies/>",
                        ["<L_ MdInf_ShlBd_Nm/>", "<L_MdIn_ShlBd_Fr/>", "<L_MdInf_ShlBd_VolProp/>", "<L_MdIn_ShlBd_DtMd/>"],
                        [td("<MdInf_ShlBd_Nm/>"), pic("<MdInf_ShlBd_Image/>")],
                        ["<MdIn_ShlBd_Fr/>", "<MdInf_ShlBd_VolProp/>", "<MdIn_ShlBd_DtMd/>"], parts4)
    cg = split(NEST_W, (3, 9))
    pg = split(cg[1] - 2 * CELL_MAR, (1, 1, 1, 1, 1, 1, 1, 1))
    plies = tbl(pg, [
        heading_row(pg, ["<L_Pl/>", "<L_Th/>", "<L_An/>", "<L_Ar/>", "<L_Vl/>", "<L_Dn/>", "<L_Ms/>", "<L_Wt/>"]),
        value_row(pg, ["<p_Pl/>", "<p_Th/>", "<p_An/>", "<p_Ar/>", "<p_Vl/>", "<p_Dn/>", "<p_Ms/>", "<p_Wt/>"]),
    ])
    composites = tbl(cg, [
        tr(tc(NEST_W, p("<Label_ ModelInfo_CompositeBodies/>", style="ZPTableHeading"), fill=BAND_FILL, span=2)),
        heading_row(cg, ["<L_ MdInf_CpBd_Nm/>", "<L_MdInf_CompBd_Props/>"]),
        tr(tc(cg[0], td("<MdInf_CopBd_Nm/>"), pic("<MdInf_CopBd_Image/>")),
           tc(cg[1],
              td("<L_ModInf_ TotalNumPlies/>"),
              td("<L_ModInf_ PliesSymmetric/>"),
              p(r("<L_ ModInf_CompDocName/>"), r(" "), r("<ModInf_ CompDocName/>"), style="ZPTableText"),
              p(r("< L_ ModInf_CompDocDtMod />"), r(" "), r("< ModInf_ CompDocDtMod/>"), style="ZPTableText"),
              plies)),
    ])
    beams = body_table("<Label_ ModelInfo_BeamBodies/>",
                       ["<L_ MdInf_BmBd_Nm/>", "<L_MdIn_BmBd_Fr/>", "<L_MdInf_BmBd_VolProp/>", "<L_MdIn_BmBd_DtMd/>"],
                       [td("<MdInf_BmBd_Nm/>"), pic("<MdInf_BmBd_Image/>")],
                       ["<MdIn_BmBd_Fr/>", "<MdInf_BmBd_VolProp/>", "<MdIn_BmBd_DtMd/>"], parts4)
    body = [p("<Image_ModelInformation/>", jc="center"), info, blank(), solids, blank(), shells, blank(),
            composites, blank(), beams, blank()]
    return section("<Header_ModelInformation/>", body, "<Content_ModelInformation/>",
                   ("<Label_CommentsModelInformation/>", "<Comments_ModelInformation/>"))


def sec_study_properties():
    body = [key_value_table(NEST_W, "<Label_StudyProp/>", "<Setting_StudyProp/>"), blank(),
            titled(key_value_table(NEST_W, "<Label_StudyProp2/>", "<Setting_StudyProp2/>"),
                   "<Header2_StudySetUpInfo/>"), blank(),
            titled(key_value_table(NEST_W, "<Label_StudyProp3/>", "<Setting_StudyProp3/>"),
                   "<Header2_StudyResultOptions/>"), blank()]
    return section("<Header_StudyProperties/>", body, "<Content_StudyProperties/>",
                   ("<Label_CommentsStudyProperties/>", "<Comments_StudyProperties/>"))


def key_value_section(name, label_tag, value_tag):
    """A section whose writer's row holds one label/value table."""
    body = [key_value_table(NEST_W, label_tag, value_tag), blank()]
    return section(f"<Header_{name}/>", body, f"<Content_{name}/>",
                   (f"<Label_Comments{name}/>", f"<Comments_{name}/>"))


def sec_units():
    return key_value_section("Units", "<Label_Unit/>", "<Setting_Unit/>")


def sec_material():
    g = split(NEST_W, (5, 9, 6))
    props = key_value_table(g[1] - 2 * CELL_MAR, "<Label_MatName/>", "<Material_Name1/>", parts=(1, 1))
    cg = split(NEST_W - 2 * CELL_MAR, (1, 1, 1))
    curves = tbl(cg, [
        tr(*[tc(c, pic(f"<Curve_1_{k}/>")) for c, k in zip(cg, (1, 2, 3))]),
        tr(*[tc(c, caption(f"<Curve_1_{k}_Label/>")) for c, k in zip(cg, (1, 2, 3))]),
        tr(*[tc(c, pic(f"<Curve_1_{k}/>")) for c, k in zip(cg, (4, 5, 6))]),
        tr(*[tc(c, caption(f"<Curve_1_{k}_Label/>")) for c, k in zip(cg, (4, 5, 6))]),
    ], kind="none")
    mat = tbl(g, [
        heading_row(g, ["<Label_ModelReference/>", "<Label_Properties/>", "<Label_Components/>"]),
        tr(tc(g[0], pic("<Image_144pxH_Material1/>")),
           tc(g[1], props),
           tc(g[2], td("<Material_ComponentList1/>"))),
        tr(tc(NEST_W, p("<Label_CurveData/>::", style="ZPTableHeading"), curves, fill=BAND_FILL, span=3)),
    ])
    return section("<Header_MaterialProperties/>", [mat, blank()], "<Content_MaterialProperties/>",
                   ("<Label_CommentsMaterialProperties/>", "<Comments_MaterialProperties/>"))


def curve_table(width, pic_tag, label_tag):
    return tbl([width], [tr(tc(width, pic(pic_tag))), tr(tc(width, caption(label_tag)))], kind="none")


def forces_table(width, heads, first, third_row):
    g = split(width, (4, 3, 3, 3, 3)) if len(heads) == 5 else split(width, (4, 3, 3, 3))
    rows = [heading_row(g, heads), value_row(g, first)]
    if third_row:
        rows.append(value_row(g, [""] * len(g)))
    return tbl(g, rows)


def sec_fixtures_loads():
    parts = (5, 5, 9, 5)
    g = split(NEST_W, parts)
    inner = lambda c: c - 2 * CELL_MAR
    fix = tbl(g, [
        heading_row(g, ["<L_FxName/>", "<Label_FixtImage/>", "<Label_FixtDetails/>", "<Label_FixtFuncCurve/>"]),
        tr(tc(g[0], td("<FixtName/>")),
           tc(g[1], pic("<Image_Fixture/>")),
           tc(g[2], entity_table(inner(g[2]), "<Details_Fixture/>")),
           tc(g[3], curve_table(inner(g[3]), "<Curve_Fixture/>", "<Curve_Fixture_Label/>"))),
        tr(tc(NEST_W, p("<Label_FixtResForces/>", style="ZPTableHeading"),
              forces_table(NEST_W - 2 * CELL_MAR,
                           ["<L_FxRsForceComp/>", "<L_FxRsForceX/>", "<L_FxRsForceY/>", "<L_FxRsForceZ/>", "<L_FxRsForceRes/>"],
                           ["<FxRsForceType1/>", "<FxRsForceX1/>", "<FxRsForceY1/>", "<FxRsForceZ1/>", "<FxRsForceRes1/>"],
                           True),
              fill=BAND_FILL, span=4)),
    ])
    loads = tbl(g, [
        heading_row(g, ["<L_LdName/>", "<Label_LoadImage/>", "<Label_LoadDetails/>", "<Label_LoadFuncCurve/>"]),
        tr(tc(g[0], td("<LoadName/>")),
           tc(g[1], pic("<Image_Load/>")),
           tc(g[2], entity_table(inner(g[2]), "<Details_Load/>")),
           tc(g[3], curve_table(inner(g[3]), "<Curve_Load/>", "<Curve_Load_Label/>"))),
    ])
    eg = split(NEST_W, (4, 3, 4, 9))
    ag = split(inner(eg[3]), (5, 3, 3))
    assoc = tbl(ag, [heading_row(ag, ["<L_LIStNam/>", "<L_LIScFact/>", "<L_LIStep/>"]),
                     value_row(ag, ["", "", ""])])
    events = tbl(eg, [
        heading_row(eg, ["<LI_EVNam/>", "<L_LINoOFCyc/>", "<L_LILoadType/>", "<L_LIStudyAssosiation/>"]),
        tr(tc(eg[0], td("<LIEVName/>")), tc(eg[1], td("<LINoOFCyc/>")), tc(eg[2], td("<LILoadType/>")),
           tc(eg[3], assoc)),
    ])
    body = [fix, blank(), loads, blank(), events, blank()]
    return section("<Header_FixturesLoads/>", body, "<Content_FixturesLoads/>",
                   ("<Label_CommentsFixturesLoads/>", "<Comments_FixturesLoads/>"))


def sec_connectors():
    g = split(NEST_W, (5, 8, 6))
    inner = lambda c: c - 2 * CELL_MAR
    weld = tbl(g, [
        heading_row(g, ["<L_WeldModelReference/>", "<L_WeldConnDetails/>", "<L_WeldSizeGraph/>"]),
        tr(tc(g[0], td("<Name_WeldConn1/>"), pic("<Image_Model_Weld1/>")),
           tc(g[1], entity_table(inner(g[1]), "<WeldConnDetails1/>")),
           tc(g[2], pic("<WeldSizeGraph1/>"))),
        tr(tc(NEST_W, p("<Label_WeldConnForces/>", style="ZPTableHeading"),
              forces_table(NEST_W - 2 * CELL_MAR,
                           ["<L_WeldForceType/>", "<L_WeldForceMin/>", "<L_WeldForceMax/>", "<L_WeldForceMean/>"],
                           ["<WeldForceType1/>", "<WeldForceMin1/>", "<WeldForceMax1/>", "<WeldForceMean1/>"],
                           False),
              td(),  # "no data" is typed here when the forces table goes
              fill=BAND_FILL, span=3)),
    ])
    sg = split(inner(g[2]), (3, 2))
    strength = tbl(sg, [
        tr(tc(sg[0], td("<L_PBBCheck/>"), fill=KEY_FILL), tc(sg[1], td("<PBB_OK/>"))),
        tr(tc(sg[0], td("<L_PBBCalFos/>"), fill=KEY_FILL), tc(sg[1], td("<PBBCFo/>"))),
        tr(tc(sg[0], td("<L_PBBDesFos/>"), fill=KEY_FILL), tc(sg[1], td("<PBBDFo/>"))),
    ])
    pbb = tbl(g, [
        heading_row(g, ["<L_PBBModelReference/>", "<L_PBBConnDetails/>", "<L_PBBStrengthDetails/>"]),
        tr(tc(g[0], td("<Name_PBBConn1/>"), pic("<Image_Model_PBB1/>")),
           tc(g[1], entity_table(inner(g[1]), "<PBBConnDetails1/>")),
           tc(g[2], strength, pic("<PBBStrengthPlot1/>"))),
        tr(tc(NEST_W, p("<Label_PBBConnForces/>", style="ZPTableHeading"), spacer(),
              forces_table(NEST_W - 2 * CELL_MAR,
                           ["<L_PBBForceComp/>", "<L_PBBForceX/>", "<L_PBBForceY/>", "<L_PBBForceZ/>", "<L_PBBForceRes/>"],
                           ["<PBBForceType1/>", "<PBBForceX1/>", "<PBBForceY1/>", "<PBBForceZ1/>", "<PBBForceRes1/>"],
                           False),
              td(),  # "no data" is typed here when the forces table goes
              fill=BAND_FILL, span=3)),
    ])
    gen = tbl(g, [
        heading_row(g, ["<L_ConnName/>", "<Label_ConnDetail/>", "<Label_ConnCurve/>"]),
        tr(tc(g[0], td("<Conn_Name/>")),
           tc(g[1], entity_table(inner(g[1]), "<Connector_Details/>")),
           tc(g[2], pic("<Connector_Curve/>"), caption("<Curve_Connector_Label/>"))),
    ])
    body = [h2("<Label_EdgeWeldConnectors/>"), weld, h2("<Label_PinBoltBearingConnectors/>"), pbb, blank(),
            gen, blank()]
    return section("<Header_ConnectorDefinitions/>", body, "<Content_ConnectorDefinitions/>",
                   ("<Label_CommentsConnectorDefinitions/>", "<Comments_ConnectorDefinitions/>"))


def sec_contacts():
    g = split(NEST_W, (4, 5, 9))
    inner = lambda c: c - 2 * CELL_MAR
    contacts = tbl(g, [
        heading_row(g, ["<Label_ContactName/>", "<Label_ContactDetails/>", "<Label_ContactDescription/>"]),
        tr(tc(g[0], td("<Contact_Name/>")),
           tc(g[1], pic("<Image_Contact/>")),
           tc(g[2], entity_table(inner(g[2]), "<Contact_Description/>"))),
        tr(tc(NEST_W, p("<Label_ContactFrictionForces/>", style="ZPTableHeading"),
              forces_table(NEST_W - 2 * CELL_MAR,
                           ["<L_CtFrcForceComp/>", "<L_CtFrcForceX/>", "<L_CtFrcForceY/>", "<L_CtFrcForceZ/>", "<L_CtFrcForceRes/>"],
                           ["<CtFrcForceType1/>", "<CtFrcForceX1/>", "<CtFrcForceY1/>", "<CtFrcForceZ1/>", "<CtFrcForceRes1/>"],
                           False),
              fill=BAND_FILL, span=3)),
    ])
    vg = split(NEST_W, (1, 1))
    plots = tbl(vg, [
        heading_row(vg, ["<L_CVName/>", "<L_CVType/>"]),
        value_row(vg, ["<CV_Name/>", "<CV_Type/>"]),
        tr(tc(NEST_W, pic("<Image_ContactVisualizationPlot/>"), span=2)),
        tr(tc(NEST_W, caption("<ImageCaption_ContactVisualizationPlot/>"), span=2)),
    ])
    body = [contacts, p("<Contact_State/>"), spacer(), h2("<Label_ContactVisualizationPlots/>"), plots, blank()]
    return section("<Header_Contact/>", body, "<Content_Contacts/>",
                   ("<Label_CommentsContacts/>", "<Comments_Contacts/>"))


def sec_mesh():
    g = split(NEST_W, (4, 5, 9))
    inner = lambda c: c - 2 * CELL_MAR
    controls = tbl(g, [
        heading_row(g, ["<L_MeshControlName/>", "<Label_MeshControlImage/>", "<Label_MeshControlDetail/>"]),
        tr(tc(g[0], td("<MeshContol_Name/>")),
           tc(g[1], pic("<MeshControl_Image/>")),
           tc(g[2], entity_table(inner(g[2]), "<MeshControl_Details/>"))),
    ])
    # The mesh picture is the last row of the settings table: a study without a mesh loses
    # the settings table and the picture with it, and an empty picture row goes on its own.
    sg = split(NEST_W, (2, 3))
    settings = tbl(sg, [
        tr(tc(sg[0], td("<Label_MeshPropSetting/>"), fill=KEY_FILL), tc(sg[1], td("<Setting_MeshPropSetting/>"))),
        tr(tc(NEST_W, pic("<Image_Mesh/>"), span=2, no_border=("left", "bottom", "right"))),
    ])
    qg = split(NEST_W, (5, 4, 3, 3))
    # The rows above a plot's picture keep with it, so a page never ends between them.
    quality = tbl(qg, [
        heading_row(qg, ["<L_MQName/>", "<L_MQType/>", "<L_MQMin/>", "<L_MQMax/>"], keep=True),
        value_row(qg, ["<MQ_Name/>", "<MQ_Type/>", "<MQ_Min/>", "<MQ_Max/>"], keep=True),
        tr(tc(NEST_W, pic("<Image_MeshQualityPlot/>"), span=4)),
        tr(tc(NEST_W, caption("<ImageCaption_MeshQualityPlot/>"), span=4)),
    ])
    body = [settings, blank(),
            h2("<Header2_MeshDetails/>"),
            key_value_table(NEST_W, "<Label_MeshProp/>", "<Setting_MeshProp/>"), blank(),
            h2("<Header2_MeshControlsDetails/>"), controls, blank(),
            h2("<Label_MeshQualityPlots/>"), quality, blank()]
    return section("<Header_MeshInformation/>", body, "<Content_MeshInformation/>",
                   ("<Label_CommentsMeshInformation/>", "<Comments_MeshInformation/>"))


def sec_sensors():
    g = split(NEST_W, (4, 5, 7))
    sensors = tbl(g, [
        heading_row(g, ["<Label_SensorName/>", "<Label_SensorLocation/>", "<Label_SensorDetails/>"]),
        tr(tc(g[0], td("<Sensor_Name/>")), tc(g[1], pic("<Sensor_Location/>")), tc(g[2], td("<Sensor_Details/>"))),
    ])
    wg = split(NEST_W, (2, 6, 3, 3, 3, 3, 3, 3))
    wfs = tbl(wg, [
        tr(tc(NEST_W, p("<Label_WFSSensorName/>", style="ZPTableHeading"), fill=BAND_FILL, span=8)),
        heading_row(wg, ["<L_spt/>", "<L_FSLoc/>", "<L_sNX/>", "<L_sNY/>", "<L_sNZ/>", "<L_sSXY/>", "<L_sSXZ/>", "<L_sSYZ/>"]),
        value_row(wg, ["<s_pt/>", "<FS_Loc/>", "<FS_sNX/>", "<FS_sNY/>", "<FS_sNZ/>", "<FS_sXY/>", "<FS_sXZ/>", "<FS_sYZ/>"]),
    ])
    body = [sensors, blank(), h2("<Header2_WorkFlowSensitiveSensors/>"), wfs, blank()]
    return section("<Header_SensorResults/>", body, "<Content_SensorResults/>",
                   ("<Label_CommentsSensorResults/>", "<Comments_SensorResults/>"))


def sum_table(prefix):
    g = split(NEST_W, (4, 3, 3, 3, 3, 3))
    tags = [f"<L_{prefix}{s}/>" for s in ("SelSet", "Units", "SumX", "SumY", "SumZ", "Resultant")]
    return tbl(g, [heading_row(g, tags), value_row(g, [""] * 6)])


def sec_resultant_forces():
    body = [titled(sum_table("RF"), "<Header2_ReactionForces/>"), blank(),
            titled(sum_table("RM"), "<Header2_ReactionMoments/>"), blank(),
            titled(sum_table("FF"), "<Header2_FreeBodyForces/>"), blank(),
            titled(sum_table("FM"), "<Header2_FreeBodyMoments/>"), blank()]
    return section("<Header_ResultantForces/>", body, "<Content_ResultantForces/>",
                   ("<Label_CommentsResultantForces/>", "<Comments_ResultantForces/>"))


def sec_beams():
    fg = split(NEST_W, (4, 3, 3, 3, 3, 3, 3, 3, 3))
    ftags = ["<FBmNm/>", "<FElemt/>", "<FJnt/>", "<FAxl/>", "<FShr1/>", "<FShr2/>", "<FMmt1/>", "<FMmt2/>", "<FTrq/>"]
    sg = split(NEST_W, (4, 3, 3, 3, 3, 3, 3, 3))
    stags = ["<SBmNm/>", "<SElemt/>", "<SJnt/>", "<SAxl/>", "<SDir1/>", "<SDir2/>", "<STorsnl/>", "<SWrstCs/>"]
    body = [h2("<Header2_BeamForce/>"), p("<Label_ForceBeamName/>", style="ZPTableLabel"),
            tbl(fg, [heading_row(fg, ftags), value_row(fg, [""] * 9)]), blank(),
            h2("<Header2_BeamStress/>"), p("<Label_StressBeamName/>", style="ZPTableLabel"),
            tbl(sg, [heading_row(sg, stags), value_row(sg, [""] * 8)]), blank()]
    return section("<Header_Beams/>", body, "<Content_Beams/>",
                   ("<Label_CommentsBeams/>", "<Comments_Beams/>"))


def sec_study_results():
    rg = split(NEST_W, (5, 4, 3, 3))
    # The rows above a plot's picture keep with it, so a page never ends between them.
    results = tbl(rg, [
        heading_row(rg, ["<L_SRName/>", "<L_SRType/>", "<L_SRMin/>", "<L_SRMax/>"], keep=True),
        value_row(rg, ["<SR_Name/>", "<SR_Type/>", "<SR_Min/>", "<SR_Max/>"], keep=True),
        # Picture and caption share a row: the row layout deletes the picture row and the
        # caption goes with it.
        tr(tc(NEST_W, pic("<Image_StudyResult/>"), caption("<ImageCaption_StudyResult/>"), span=4)),
    ])
    fg = split(NEST_W, (1, 1, 1, 1))
    freq = tbl(fg, [heading_row(fg, ["<Label_FreqNumber/>", "<Label_FreqRadSec/>", "<Label_FreqHertz/>", "<Label_FreqPeriod/>"]),
                    value_row(fg, ["<FreqNumber/>", "<FreqInRadSec/>", "<FreqInHertz/>", "<FreqInPeriod/>"])])
    mg = split(NEST_W, (1, 1, 1, 1, 1))
    mass = tbl(mg, [heading_row(mg, ["<L_MPModeNum/>", "<L_MPFreqHz/>", "<L_MPXDir/>", "<L_MPYDir/>", "<L_MPZDir/>"]),
                    value_row(mg, ["<MPModeNum/>", "<MPFreqHz/>", "<MPXDir/>", "<MPYDir/>", "<MPZDir/>"])])
    # Pressure-vessel linearization: rows 2..9 x columns 1..9 are the result grid.
    pg = split(NEST_W, (1,) * 9)
    grid_rows = [tr(tc(pg[0], td("<PVL_c1/>"), fill=LABEL_FILL),
                    *[tc(c, th("")) if False else tc(c, p(style="ZPTableHeading"), fill=LABEL_FILL) for c in pg[1:]],
                    header=False)]
    for _ in range(7):
        grid_rows.append(tr(tc(pg[0], p(style="ZPTableHeading"), fill=KEY_FILL), *[tc(c, td()) for c in pg[1:]]))
    third = split(NEST_W, (1, 1, 1))
    cg = split(NEST_W - 2 * CELL_MAR, (1, 1, 1, 1))
    pv_curves = tbl(cg, [
        tr(*[tc(c, pic(f"<PVLCurve_1_{k}/>")) for c, k in zip(cg, (1, 2, 3, 4))]),
        tr(*[tc(c, caption(f"<PVLCurve_1_{k}_Label/>")) for c, k in zip(cg, (1, 2, 3, 4))]),
        tr(*[tc(c, pic(f"<PVLCurve_1_{k}/>")) for c, k in zip(cg, (5, 6, 7, 8))]),
        tr(*[tc(c, caption(f"<PVLCurve_1_{k}_Label/>")) for c, k in zip(cg, (5, 6, 7, 8))]),
    ], kind="none")
    pv = tbl(pg, [
        tr(tc(NEST_W, p("<PVL_PlotName/>", style="ZPTableHeading"), fill=BAND_FILL, span=9)),
        *grid_rows,
        tr(tc(third[0], td("<PVL_Point1/>"), span=3), tc(third[1], td("<PVL_Point2/>"), span=3),
           tc(third[2], td("<PVL_RUnits/>"), span=3)),
        tr(tc(NEST_W, pic("<Image_PVLModel/>"), span=9)),
        tr(tc(NEST_W, p("<Label_PVLCurveData/>:", style="ZPTableHeading"), pv_curves, fill=BAND_FILL, span=9)),
    ])
    body = [results, blank(),
            h2("<Label_StudyResultsFrequencies/>"), freq, blank(),
            h2("<Label_StudyResultsMassParticipation/>"), mass, blank(),
            h2("<Header2_PressureVesselLinearization/>"), spacer(), pv, blank()]
    return section("<Header_StudyResults/>", body, "<Content_StudyResults/>",
                   ("<Label_CommentsStudyResults/>", "<Comments_StudyResults/>"))


def sec_conclusions():
    return section("<Header_Conclusions/>", None, "<Content_Conclusions/>",
                   ("<Label_CommentsConclusions/>", "<Comments_Conclusions/>"))


def sec_user_defined():
    body = [p("<UserDefined_Data_Caption/>", style="ZPTableLabel"), p("<UserDefined_Data/>")]
    return section("<Header_UserDefined/>", body, "<Content_UserDefined/>",
                   ("<Label_CommentsUserDefined/>", "<Comments_UserDefined/>"))


def image_template():
    return tbl([TEXT_W], [
        tr(tc(TEXT_W, pic("<Image_Custom/>"))),
        tr(tc(TEXT_W, caption("<ImageCaption_Custom/>"))),
        tr(tc(TEXT_W, p("<Label_CustomImageComments/>", style="ZPTableHeading"), fill=KEY_FILL)),
        tr(tc(TEXT_W, td("<ImageComments_Custom/>"))),
    ])


SECTIONS = [
    ("Description", sec_description),
    ("Assumptions", sec_assumptions),
    ("Model Information", sec_model_information),
    ("Study Properties", sec_study_properties),
    ("Units", sec_units),
    ("Material Properties", sec_material),
    ("Loads and Fixtures", sec_fixtures_loads),
    ("Connector Definitions", sec_connectors),
    ("Contact Information", sec_contacts),
    ("Mesh Information", sec_mesh),
    ("Sensor Details", sec_sensors),
    ("Resultant Forces", sec_resultant_forces),
    ("Beams", sec_beams),
    ("Study Results", sec_study_results),
    ("Conclusion", sec_conclusions),
    ("User Defined", sec_user_defined),
]


# ------------------------------------------------------- design-study template ---
def sec_design_model_information():
    g = split(NEST_W, (3, 2, 6, 3))
    docs = tbl(g, [heading_row(g, ["<Label_Name/>", "<Label_Config/>", "<Label_DocPath/>", "<Label_Modified/>"]),
                   value_row(g, ["<Name_row1/>", "<Config_row1/>", "<DocPath_row1/>", "<Modified_row1/>"])])
    return section("<Header_ModelInformation/>", [docs, blank()], "<Content_ModelInformation/>",
                   ("<Label_CommentsModelInformation/>", "<Comments_ModelInformation/>"))


def sec_design_study_properties():
    return key_value_section("StudyProperties", "<Label_StudyProp/>", "<Setting_StudyProp/>")


def sec_design_setup():
    # Each table carries its caption in a title row, so that a table with nothing to show
    # takes its caption with it.
    dg = split(NEST_W, (4, 3, 6, 2))
    variables = titled(tbl(dg, [
        heading_row(dg, ["<L_DVName/>", "<Label_DVType/>", "<Label_DVValues/>", "<Label_DVUnits/>"]),
        value_row(dg, ["<DVName/>", "<DVType/>", "<Details_DVValues/>", "<DVUnits/>"])]),
        "<Label_DesignVariables/>")
    cg = split(NEST_W, (4, 3, 4, 2, 3))
    constraints = titled(tbl(cg, [
        heading_row(cg, ["<L_ConstrName/>", "<L_ ConstrType/>", "<Label_CoBounds/>", "<Label_ConUnits/>",
                         "<L_ConsStudy/>"]),
        value_row(cg, ["< ConstrName/>", "<ConstrType/>", "<Details_Bounds/>", "<ConstrUnits/>",
                       "<ConstrStudyName/>"])]),
        "<Label_Constraints/>")
    gg = split(NEST_W, (4, 3, 4, 2, 3))
    goals = titled(tbl(gg, [
        heading_row(gg, ["<L_GoalName/>", "<Label_GoalDetail/>", "<Label_GoalProperty/>", "<Label_GoalWeight/>",
                         "<Label_GoalStudy/>"]),
        value_row(gg, ["<Goal_Name/>", "<Goal_Details/>", "<Goal_Property/>", "<Goal_Weight/>",
                       "<Goal_StudyName/>"])]),
        "<Label_Goals/>")
    body = [variables, blank(), constraints, blank(), goals, blank()]
    return section("<Header_DesignStudySetUp/>", body, "<Content_FixturesLoads/>",
                   ("<Label_CommentsFixturesLoads/>", "<Comments_FixturesLoads/>"))


def sec_design_results():
    # The run table: name, units and five run columns; the writer clones it for every five
    # runs and removes the surplus columns of the last clone.
    rg = split(NEST_W, (5, 3, 3, 3, 3, 3, 3))
    runs = tbl(rg, [
        heading_row(rg, ["<L_ComName/>", "<L_Units/>", "<L_Iter1/>", "<L_Iter2/>", "<L_Iter3/>", "<L_Iter4/>",
                         "<L_Iter5/>"]),
        value_row(rg, ["<SR_ComName/>", "<SR_Units/>", "<SR_Iter1/>", "<SR_Iter2/>", "<SR_Iter3/>", "<SR_Iter4/>",
                       "<SR_Iter5/>"])])
    pg = split(NEST_W, (5, 4, 3, 3))
    # One copy a plot. Picture and caption share a row: without pictures the writer deletes the
    # caption's row, and the picture's place goes with it.
    plots = tbl(pg, [
        heading_row(pg, ["<L_SRName/>", "<L_SRType/>", "<L_SRMin/>", "<L_SRMax/>"], keep=True),
        value_row(pg, ["<SR_Name/>", "<SR_Type/>", "<SR_Min/>", "<SR_Max/>"], keep=True),
        tr(tc(NEST_W, pic("<Image_StudyResult/>"), caption("<ImageCaption_StudyResult/>"), span=4)),
    ])
    body = [p("<StudyResults_Run_Status/>"), runs, blank(), plots, blank()]
    return section("<Header_StudyResults/>", body, "<Content_StudyResults/>",
                   ("<Label_CommentsStudyResults/>", "<Comments_StudyResults/>"))


DESIGN_SECTIONS = [
    ("Description", sec_description),
    ("Assumptions", sec_assumptions),
    ("Model Information", sec_design_model_information),
    ("Study Properties", sec_design_study_properties),
    ("Units", sec_units),
    ("Design Study Setup", sec_design_setup),
    ("Study Results", sec_design_results),
    ("Conclusion", sec_conclusions),
    ("User Defined", sec_user_defined),
]
DESIGN_TOC_PAGES = [3, 3, 3, 3, 3, 3, 4, 5, 5]
GENERATED_PARTS = {"word/document.xml"}


# ------------------------------------------------------- motion-study template ---
# A motion report's page headers, footers and cover carry tags where the study template has
# bracketed placeholders; it writes no comments and has no inserted images' table.
MOTION = False


def sec_motion_results():
    rg = split(NEST_W, (5, 5, 3, 3))
    labels = tbl(rg, [heading_row(rg, ["<L_SRName/>", "<L_SR_SelectedEntity/>", "<L_SRMin/>", "<L_SRMax/>"]),
                      value_row(rg, [""] * 4)])
    body = [p("<SR_TracePlotName/>", style="ZPTableLabel"), pic("<ImageCaption_TracePlot/>"), labels, blank()]
    return section("<Header_StudyResults/>", body)


def sec_motion_summary():
    g = split(NEST_W, (4, 2, 2, 2, 2, 2))
    half = [sum(g[:3]), sum(g[3:])]
    # The blank behind the second group's tag belongs to the tag.
    groups = tr(tc(half[0], th("<Label_Group1/>"), fill=LABEL_FILL, span=3),
                tc(half[1], th("<Label_Group2/> "), fill=LABEL_FILL, span=3), header=True)
    table = tbl(g, [groups,
                    heading_row(g, ["<Col1_Header/>", "<Col2_Header/>", "<Col3_Header/>", "<Col4_Header/>",
                                    "<Col5_Header/>", "<Col6_Header/>"]),
                    value_row(g, ["<Result_Item/>"] + [""] * 5)])
    return section("<Header_ResultSummary/>", [titled(table, "<Label_HeaderName/>"), blank()])


MOTION_SECTIONS = [
    ("Description", sec_description),
    ("Study Results", sec_motion_results),
    ("Result Summary", sec_motion_summary),
]
MOTION_TOC_PAGES = [3, 3, 3]


# ------------------------------------------------------------------ cover ---
def cover():
    g = [3000, 5000]
    rows = []
    fields = (("<Label_Date/>", "<Published_Date/>"), ("<Label_Designer/>", "<Designer_Name/>"),
              ("<Label_StudyName/>", "<Study_Name/>"), ("<Label_StudyType/>", "<Study_Type/>"))
    if MOTION:
        fields = fields[:2] + (("<Label_MotionStudyName/>", "<Study_Name/>"),)
    for label, value in fields:
        rows.append(tr(tc(g[0], p(r(label, bold=True, color=NAVY), style="ZPCoverText")),
                       tc(g[1], p(label and value, style="ZPCoverText"))))
    info = tbl(g, rows, kind="grid", width_pct=False, jc="center")
    # the cover table has only horizontal rules
    info.children[0].children = [c if c.tag != "w:tblBorders" else w("tblBorders", None,
        w("top", {"val": "single", "sz": 8, "space": "0", "color": NAVY}),
        w("left", {"val": "nil"}),
        w("bottom", {"val": "single", "sz": 8, "space": "0", "color": NAVY}),
        w("right", {"val": "nil"}),
        w("insideH", {"val": "single", "sz": 4, "space": "0", "color": GRID}),
        w("insideV", {"val": "nil"})) for c in info.children[0].children]
    return [
        p(style="Title", before=1200, after=0),
        p(r("<Label_Simulationof/>"), r("<Model_Name/>"), style="Title"),
        p(r("<Image_288pxW_MainModel/>"), jc="center", before=480, after=480),
        info,
        p(w("r", None, w("br", {"type": "page"}))),
    ]


# Page of each section in the template as LibreOffice lays it out; only the
# cached entries use it, the run updates the table of contents.
TOC_PAGES = [3, 3, 3, 4, 4, 4, 5, 6, 6, 7, 7, 8, 9, 9, 10, 10]


def toc(sections=None, pages=None):
    sections = sections or SECTIONS
    pages = pages or TOC_PAGES
    entries = []
    pos = 9638 - 10
    for i, (name, _) in enumerate(sections):
        bm = f"_Toc{100000001 + i}"
        entries.append(w("p", None,
            w("pPr", None, w("pStyle", {"val": "TOC1"}),
              w("tabs", None, w("tab", {"val": "right", "leader": "dot", "pos": pos}))),
            *([w("r", None, w("fldChar", {"fldCharType": "begin"})),
               w("r", None, w("instrText", {"xml:space": "preserve"}, text=' TOC \\o "1-3" \\h \\z \\u ')),
               w("r", None, w("fldChar", {"fldCharType": "separate"}))] if i == 0 else []),
            w("hyperlink", {"w:anchor": bm, "w:history": "1"},
              w("r", None, w("rPr", None, w("rStyle", {"val": "Hyperlink"}), w("noProof")), w("t", None, text=name)),
              w("r", None, w("rPr", None, w("noProof"), w("webHidden")), w("tab")),
              w("r", None, w("rPr", None, w("noProof"), w("webHidden")), w("fldChar", {"fldCharType": "begin"})),
              w("r", None, w("rPr", None, w("noProof"), w("webHidden")),
                w("instrText", {"xml:space": "preserve"}, text=f" PAGEREF {bm} \\h ")),
              w("r", None, w("rPr", None, w("noProof"), w("webHidden")), w("fldChar", {"fldCharType": "separate"})),
              w("r", None, w("rPr", None, w("noProof"), w("webHidden")), w("t", None, text=str(pages[i]))),
              w("r", None, w("rPr", None, w("noProof"), w("webHidden")), w("fldChar", {"fldCharType": "end"})))))
    end = p(w("r", None, w("fldChar", {"fldCharType": "end"})))
    return w("sdt", None,
             w("sdtPr", None, w("id", {"val": "-1746101248"}),
               w("docPartObj", None, w("docPartGallery", {"val": "Table of Contents"}), w("docPartUnique"))),
             w("sdtEndPr"),
             w("sdtContent", None,
               p("<Label_TableofContents/>" if MOTION else "Table of Contents", style="TOCHeading"),
               *entries, end))


def document(sections=None, pages=None):
    sections = sections or SECTIONS
    body = []
    body.extend(cover())
    body.append(toc(sections, pages))
    body.append(p(w("r", None, w("br", {"type": "page"}))))
    for i, (name, make) in enumerate(sections):
        t = make()
        bm = f"_Toc{100000001 + i}"
        # put the table-of-contents bookmark round the heading tag
        first_row = t.children[2]
        head_cell = [c for c in first_row.children if c.tag == "w:tc"][0]
        head_p = head_cell.children[1]  # tcPr, then the heading paragraph
        runs = head_p.children
        head_p.children = [runs[0], w("bookmarkStart", {"id": i, "name": bm}), *runs[1:],
                           w("bookmarkEnd", {"id": i})]
        body.append(t)
        body.append(p())
    if not MOTION:
        body.append(image_template())
        body.append(p())
    sect = w("sectPr", None,
             w("headerReference", {"type": "default", "r:id": "rIdHeaderDefault"}),
             w("headerReference", {"type": "first", "r:id": "rIdHeaderFirst"}),
             w("footerReference", {"type": "default", "r:id": "rIdFooterDefault"}),
             w("footerReference", {"type": "first", "r:id": "rIdFooterFirst"}),
             w("pgSz", {"w": 12240, "h": 15840}),
             w("pgMar", {"top": 1304, "right": 1134, "bottom": 1134, "left": 1134,
                         "header": 567, "footer": 567, "gutter": 0}),
             w("cols", {"space": 708}),
             w("titlePg"),
             w("docGrid", {"linePitch": 360}))
    doc = E("w:document", {"xmlns:w": W_NS, "xmlns:r": R_NS,
                           "xmlns:wp": "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing",
                           "xmlns:a": "http://schemas.openxmlformats.org/drawingml/2006/main",
                           "xmlns:pic": "http://schemas.openxmlformats.org/drawingml/2006/picture"},
            [w("body", None, *body, sect)])
    return doc


# ------------------------------------------------------ headers / footers ---
def hdr_root(tag, *content):
    return E(tag, {"xmlns:w": W_NS, "xmlns:r": R_NS}, list(content))


# The motion template's tags for the study template's placeholders.
MOTION_PLACEHOLDERS = {
    "[Large Company Logo]": "<Company_Logo/>", "[Sm Com Logo]": "<Company_Logo/>",
    "[Company Name]": "<Company_Name/>", "[Company Address Line 1]": "<Company_Address_Line1/>",
    "[Company Address Line 2]": "<Company_Address_Line2/>", "[Company Phone]": "<Company_Phone/>",
    "[Company Fax]": "<Company_Fax/>", "[Company Email]": "<Company_Email/>",
    "[Designer\u2019s Name]": "<Designer_Name/>", "[Date]": "<Published_Date/>",
}


def ph(placeholder):
    return MOTION_PLACEHOLDERS[placeholder] if MOTION else placeholder


def header_first():
    g = [4200, TEXT_W - 4200]
    lines = [p(r(ph("[Company Name]"), bold=True, color=NAVY, size=20), style="Header", jc="right"),
             p(ph("[Company Address Line 1]"), style="Header", jc="right"),
             p(ph("[Company Address Line 2]"), style="Header", jc="right"),
             p(ph("[Company Phone]"), style="Header", jc="right"),
             p(ph("[Company Fax]"), style="Header", jc="right"),
             p(ph("[Company Email]"), style="Header", jc="right")]
    inner = tbl([g[1] - 2 * CELL_MAR], [tr(tc(g[1] - 2 * CELL_MAR, *lines))], kind="none")
    outer = tbl(g, [tr(tc(g[0], p(ph("[Large Company Logo]"), style="Header"), valign="center"),
                       tc(g[1], inner))], kind="none")
    outer.children[0].children = [c if c.tag != "w:tblBorders" else w("tblBorders", None,
        w("top", {"val": "nil"}), w("left", {"val": "nil"}),
        w("bottom", {"val": "single", "sz": 12, "space": "0", "color": NAVY}),
        w("right", {"val": "nil"}), w("insideH", {"val": "nil"}), w("insideV", {"val": "nil"}))
        for c in outer.children[0].children]
    return hdr_root("w:hdr", outer, p(style="Header"))


def header_default():
    g = [2400, TEXT_W - 2400 - 2400, 2400]
    mid = [p(r(ph("[Designer\u2019s Name]"), bold=True), style="Header", jc="center"),
           p(ph("[Company Name]"), style="Header", jc="center"),
           p(ph("[Company Address Line 1]"), style="Header", jc="center"),
           p(ph("[Company Address Line 2]"), style="Header", jc="center")]
    t = tbl(g, [tr(tc(g[0], p(ph("[Sm Com Logo]"), style="Header"), valign="center"),
                   tc(g[1], *mid, valign="center"),
                   tc(g[2], p(ph("[Date]"), style="Header", jc="right"), valign="center"))], kind="none")
    t.children[0].children = [c if c.tag != "w:tblBorders" else w("tblBorders", None,
        w("top", {"val": "nil"}), w("left", {"val": "nil"}),
        w("bottom", {"val": "single", "sz": 8, "space": "0", "color": NAVY}),
        w("right", {"val": "nil"}), w("insideH", {"val": "nil"}), w("insideV", {"val": "nil"}))
        for c in t.children[0].children]
    return hdr_root("w:hdr", t, p(style="Header"))


def field(instr, shown):
    return [w("r", None, w("fldChar", {"fldCharType": "begin"})),
            w("r", None, w("instrText", {"xml:space": "preserve"}, text=f" {instr} ")),
            w("r", None, w("fldChar", {"fldCharType": "separate"})),
            w("r", None, w("t", None, text=shown)),
            w("r", None, w("fldChar", {"fldCharType": "end"}))]


def footer(page_numbers):
    # The motion report's first page names the motion analysis; its running footer has the
    # study template's tag.
    label = "<Label_AnalyzedUsingOrvantaMotion/>" if MOTION and not page_numbers else \
        "<Label_AnalyzedwithOrvantaSimulation/>"
    rule = w("pBdr", None, w("top", {"val": "single", "sz": 6, "space": "4", "color": NAVY}))
    tabs = [{"val": "right", "pos": TEXT_W}] if not page_numbers else \
        [{"val": "center", "pos": TEXT_W // 2 + 600}, {"val": "right", "pos": TEXT_W}]
    runs = [r("<Label_Simulationof/> <Model_Name/>"), w("r", None, w("tab")),
            r(label)]
    if page_numbers:
        runs += [w("r", None, w("tab"))] + field("PAGE", "2")
    para = w("p", None, w("pPr", None, w("pStyle", {"val": "Footer"}), rule,
                          w("tabs", None, *[w("tab", t) for t in tabs])), *runs)
    return hdr_root("w:ftr", para)


# ------------------------------------------------------------ package parts ---
def write(folder, rel, text):
    path = os.path.join(folder, rel)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write(text)


def xml(root):
    return '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n' + root.render()


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    args = sys.argv[1:]
    global MOTION
    design = "--design" in args
    MOTION = "--motion" in args
    args = [a for a in args if a not in ("--design", "--motion")]
    study_folder = os.path.join(here, "..", "templates", "SimulationReportTemplate_2007.dotx")
    if design or MOTION:
        kind = "Motion" if MOTION else "Design"
        name = "simulationreporttemplate_mstudy_2003.dotx" if MOTION else "SimulationReportTemplate_DStudy_2007.dotx"
        out = args[0] if args else os.path.join(here, "..", "templates", name)
        # styles, theme, settings and the package's relationships are the study template's
        for folder, _, files in os.walk(study_folder):
            for name in files:
                rel = os.path.relpath(os.path.join(folder, name), study_folder)
                if rel.replace(os.sep, "/") in GENERATED_PARTS:
                    continue
                with open(os.path.join(folder, name), encoding="utf-8") as f:
                    text = f.read()
                if rel.replace(os.sep, "/") == "docProps/core.xml":
                    text = (text.replace("Simulation Study Report", kind + " Study Report")
                                .replace("Template of the simulation study report.",
                                         "Template of the " + kind.lower() + " study report."))
                write(out, rel, text)
        if MOTION:
            write(out, "word/document.xml", xml(document(MOTION_SECTIONS, MOTION_TOC_PAGES)))
        else:
            write(out, "word/document.xml", xml(document(DESIGN_SECTIONS, DESIGN_TOC_PAGES)))
    else:
        out = args[0] if args else study_folder
        write(out, "word/document.xml", xml(document()))
    write(out, "word/header1.xml", xml(header_first()))
    write(out, "word/header2.xml", xml(header_default()))
    write(out, "word/footer1.xml", xml(footer(False)))
    write(out, "word/footer2.xml", xml(footer(True)))


if __name__ == "__main__":
    main()
