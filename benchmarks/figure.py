"""CPU time per pixel over the size of the map, as a picture."""

from stages import GROUPS, SIDES, WHOLE, megapixels


def available():
    try:
        import matplotlib  # noqa: F401
    except ImportError:
        return False
    return True


def draw(results, path):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    figure, axes = plt.subplots(figsize=(7, 4.5), dpi=110)
    lines = {name: stages for name, (_, stages) in GROUPS.items()}
    lines["whole"] = [WHOLE]
    for name, stages in lines.items():
        points = [(megapixels(side), results.sum(stages, "library", "default", side))
                  for side in SIDES]
        points = [(size, time * 1e3) for size, time in points if time is not None]
        if points:
            axes.plot(*zip(*points), marker="o", label=name, linewidth=2.5 if name == WHOLE else 1)
    axes.set_xscale("log", base=4)
    axes.set_yscale("log")
    axes.set_xticks([megapixels(side) for side in SIDES])
    axes.set_xticklabels([f"{megapixels(side):g}" for side in SIDES])
    axes.set_xlabel("size of the map [megapixels]")
    axes.set_ylabel("CPU time per pixel [ns]")
    axes.grid(True, which="major", alpha=0.3)
    axes.legend(loc="center left", bbox_to_anchor=(1.0, 0.5), frameon=False)
    figure.savefig(path, bbox_inches="tight", metadata={"Software": None})
