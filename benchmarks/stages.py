"""What is measured, and how much of it there may be."""

# Group of stages -> its budget in CPU seconds per megapixel, and the stages in it.
GROUPS = {
    "load, denoise": (0.015, ["load", "denoise", "dilate"]),
    "ridges": (0.010, ["ridges", "boundary"]),
    "scales": (0.020, ["scales"]),
    "tracking, seeds": (0.010, ["tracking"]),
    "floods": (0.030, ["first-flood", "second-flood"]),
    "graph, merging, cuts": (0.005, ["graph", "merging", "cuts", "records"]),
}
WHOLE = "whole"
WHOLE_BUDGET = 0.09
STAGES = [stage for _, stages in GROUPS.values() for stage in stages]

SETTINGS = ["default", "thin-walls"]
SIDES = [500, 1000, 2000, 4000, 8000]
TABLE_SIDE = 1000  # The size at which everything is compared.


def megapixels(side):
    return side * side / 1e6
