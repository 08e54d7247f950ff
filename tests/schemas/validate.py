"""Runs vorund on the example maps and holds what it writes to the schemas.

validate.py VORUND REPOSITORY: exits with 1 and a line per fault if anything does not fit.
"""

import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

# What is written, with the schema that describes it.
FILES = {
    "rooms.json": "rooms.schema.json",
    "rooms.geojson": "rooms.geojson.schema.json",
    "times.json": "timings.schema.json",
}


def faults(vorund, repository):
    validators = {}
    for name, schema in FILES.items():
        text = json.loads((repository / "schemas" / schema).read_text())
        jsonschema.Draft202012Validator.check_schema(text)
        validators[name] = jsonschema.Draft202012Validator(text)
    for yaml in sorted((repository / "examples/maps").glob("*.yaml")):
        for options in ([], ["--straight-borders", "--set", "rooms/simplify=0.2"]):
            with tempfile.TemporaryDirectory() as folder:
                subprocess.run([vorund, "segment", yaml, "--out", folder, "--quiet",
                                "--timings", f"{folder}/times.json", *options], check=True)
                for name, validator in validators.items():
                    document = json.loads((pathlib.Path(folder) / name).read_text())
                    for error in validator.iter_errors(document):
                        yield f"{yaml.name} {options} {name}: {error.json_path}: {error.message}"


def refuses_what_does_not_fit(repository):
    """The schemas themselves: documents of another format, without a collection, without a stage."""
    broken = {"rooms.schema.json": {"format": 2}, "rooms.geojson.schema.json": {"type": "Feature"},
              "timings.schema.json": {"format": 1, "megapixels": 1.0, "stages": []}}
    for name, document in broken.items():
        schema = json.loads((repository / "schemas" / name).read_text())
        if jsonschema.Draft202012Validator(schema).is_valid(document):
            yield f"{name} takes {document}"


def main():
    vorund, repository = sys.argv[1], pathlib.Path(sys.argv[2])
    found = [*faults(vorund, repository), *refuses_what_does_not_fit(repository)]
    print("\n".join(found) if found else "All documents fit their schemas.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
