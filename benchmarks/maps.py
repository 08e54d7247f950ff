"""A user's maps, and the time that the whole flow takes on them."""

import json
import subprocess

ENDINGS = {".bmp", ".jpeg", ".jpg", ".pgm", ".png", ".tif", ".tiff"}
TRUTH = "_gt_segmentation"


def is_variant(path, names):
    """Whether another map's name, an underscore and more make up the name."""
    parts = path.stem.split("_")
    return any("_".join(parts[:count]) in names for count in range(1, len(parts)))


def with_resolution(image):
    """The map_server file beside an image, if there is one."""
    yaml = image.with_suffix(".yaml")
    return yaml if yaml.is_file() else image


def maps_of_folder(folder, variants):
    images = sorted(path for path in folder.iterdir()
                    if path.suffix.lower() in ENDINGS and path.is_file())
    names = {path.stem for path in images}
    chosen = [path for path in images
              if TRUTH not in path.stem and (variants or not is_variant(path, names))]
    return [with_resolution(path) for path in chosen]


def find(given, variants):
    """The maps that the user gave, as files and folders."""
    paths = []
    for path in given:
        paths += maps_of_folder(path, variants) if path.is_dir() else [path]
    if not paths:
        raise SystemExit(f"{given[0]}: it holds no map")
    return paths


def measure(program, paths, settings, rounds):
    """What map_flow tells of each map, with its name."""
    run = subprocess.run([program, "--settings", settings, "--rounds", str(rounds), *paths],
                         check=True, text=True, stdout=subprocess.PIPE)
    entries = json.loads(run.stdout)
    for entry, path in zip(entries, paths):
        entry["name"] = path.stem
    return entries
