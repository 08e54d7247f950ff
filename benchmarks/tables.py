"""Results as Markdown."""

from stages import GROUPS, SETTINGS, SIDES, STAGES, TABLE_SIDE, WHOLE, WHOLE_BUDGET, megapixels

NOTHING = "–"


def row(cells):
    return "| " + " | ".join(cells) + " |"


def table(titles, rows):
    """The first column to the left, the others to the right."""
    rule = "|---|" + "---:|" * (len(titles) - 1)
    return "\n".join([row(titles), rule, *[row(cells) for cells in rows]])


def number(value, digits):
    return NOTHING if value is None else f"{value:.{digits}f}"


def ratio(value):
    if value is None:
        return NOTHING
    digits = 2 if value < 1 else 1 if value < 10 else 0
    return f"{value:.{digits}f} ×"


def scikit_ratio(results, scikit, stages):
    """Over those stages that scikit-image has."""
    both = [stage for stage in stages if stage in scikit]
    ours = results.sum(both, "library", "default", TABLE_SIDE)
    if not both or ours is None:
        return None
    return sum(scikit[stage] for stage in both) / ours


def stage_cells(results, scikit, stages):
    """From the third column on."""
    cells = [number(results.sum(stages, "library", "default", TABLE_SIDE), 4),
             ratio(results.ratio(stages, "default", TABLE_SIDE)),
             ratio(scikit_ratio(results, scikit, stages))]
    for settings in SETTINGS[1:]:
        cells += [number(results.sum(stages, "library", settings, TABLE_SIDE), 4),
                  ratio(results.ratio(stages, settings, TABLE_SIDE))]
    return cells


def stage_table(results, scikit):
    """`scikit`: stage -> CPU seconds per megapixel."""
    titles = ["stage", "budget", "CPU s per Mpx", "plain ÷ library", "scikit-image ÷ library"]
    for settings in SETTINGS[1:]:
        titles += [f"{settings}: CPU s per Mpx", "plain ÷ library"]
    rows = []
    for group, (budget, stages) in GROUPS.items():
        rows.append([f"**{group}**", f"{budget:.3f}", *stage_cells(results, scikit, stages)])
        if len(stages) > 1:
            rows += [[stage, "", *stage_cells(results, scikit, [stage])] for stage in stages]
    rows.append([f"**{WHOLE}**", f"{WHOLE_BUDGET:.3f}", *stage_cells(results, scikit, [WHOLE])])
    return table(titles, rows)


def size_table(results):
    """Nanoseconds per pixel; notes tell why a size was left out."""
    notes = []

    def cell(stage, side):
        time = results.time(stage, "library", "default", side)
        reason = results.reason(stage, "library", "default", side)
        if time is None and reason is not None:
            if reason not in notes:
                notes.append(reason)
            return f"{NOTHING} ({notes.index(reason) + 1})"
        return number(None if time is None else time * 1e3, 1)

    sides = [side for side in SIDES
             if any(results.time(stage, "library", "default", side) for stage in STAGES)]
    rows = [[stage, *[cell(stage, side) for side in sides]] for stage in [*STAGES, WHOLE]]
    text = table(["ns per pixel", *[f"{megapixels(side):g} Mpx" for side in sides]], rows)
    return text + "".join(f"\n\n({i}) {note}" for i, note in enumerate(notes, 1))


def command_table(documents):
    """Of several runs, as `vorund segment --timings` writes them, the best of every stage."""
    size = documents[0]["megapixels"]
    stages = [stage["name"] for stage in documents[0]["stages"]]
    best = {name: min(stage["cpu_s"] for document in documents for stage in document["stages"]
                      if stage["name"] == name) for name in stages}
    best["**total**"] = min(document["total"]["cpu_s"] for document in documents)
    return table(["stage", "CPU s per Mpx"],
                 [[name, number(seconds / size, 4)] for name, seconds in best.items()])


def memory_table(memory):
    """`memory`: side -> bytes per pixel, or a text that tells why there is none."""
    rows = [[f"{megapixels(side):g} Mpx", value if isinstance(value, str) else f"{value:.0f}"]
            for side, value in memory.items()]
    return table(["map", "bytes per pixel"], rows)


def map_table(maps_by_settings):
    """`maps_by_settings`: settings -> what map_flow tells of each map, in the same order."""
    titles = ["map", "Mpx"]
    for settings in maps_by_settings:
        titles += [f"{settings}: CPU s per Mpx", "plain ÷ library"]
    rows, notes = [], []
    for entries in zip(*maps_by_settings.values()):
        cells = [entries[0]["name"], number(entries[0].get("megapixels"), 2)]
        for entry in entries:
            if "error" in entry:
                notes.append(f"{entry['name']}: {entry['error']}")
                cells += [NOTHING, NOTHING]
                continue
            cells += [number(entry["library_s"] / entry["megapixels"], 4),
                      ratio(entry["plain_s"] / entry["library_s"])]
        rows.append(cells)
    rows.append(["**mean**", "", *[cell for entries in maps_by_settings.values()
                                   for cell in mean_cells(entries)]])
    return "\n\n".join([table(titles, rows), *notes])


def mean_cells(entries):
    """Of seconds per megapixel: large maps count as much as small ones."""
    measured = [entry for entry in entries if "error" not in entry]
    if not measured:
        return [NOTHING, NOTHING]
    library = sum(e["library_s"] / e["megapixels"] for e in measured) / len(measured)
    plain = sum(e["plain_s"] / e["megapixels"] for e in measured) / len(measured)
    return [number(library, 4), ratio(plain / library)]


def between_markers(text, name, content):
    """The text with the content in place of what stands between the markers of that name."""
    begin, end = f"<!-- begin {name} -->", f"<!-- end {name} -->"
    if begin not in text or end not in text:
        raise ValueError(f"no place for {name}: {begin} or {end} is missing")
    before, after = text.split(begin)[0], text.split(end)[-1]
    return f"{before}{begin}\n{content}\n{end}{after}"
