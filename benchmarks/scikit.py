"""CPU seconds of scikit-image on the images that export_inputs has written."""

import pathlib
import time


def available():
    try:
        import skimage.filters  # noqa: F401
        import skimage.segmentation  # noqa: F401
    except ImportError:
        return False
    return True


def version():
    import skimage
    return skimage.__version__


def best_cpu_seconds(work, rounds):
    times = []
    for _ in range(rounds):
        start = time.process_time()
        work()
        times.append(time.process_time() - start)
    return min(times)


def seconds(directory, rounds):
    """Stage -> CPU seconds, for those stages that scikit-image has, at the default settings."""
    import numpy
    from skimage.filters import meijering
    from skimage.segmentation import watershed

    def image(name):
        return numpy.load(pathlib.Path(directory) / f"{name}.npy")

    denoised, ridges, markers = image("denoised"), image("ridges"), image("markers")
    boundary, fill_seeds = image("boundary"), image("fill_seeds")
    return {
        "ridges": best_cpu_seconds(
            lambda: meijering(denoised, sigmas=[2.0], black_ridges=False, mode="reflect"), rounds),
        "first-flood": best_cpu_seconds(
            lambda: watershed(ridges, markers, connectivity=1, watershed_line=True), rounds),
        "second-flood": best_cpu_seconds(
            lambda: watershed(boundary, fill_seeds, connectivity=1, watershed_line=False), rounds),
    }
