"""Runs every benchmark once on the smallest map: smoke_test.py DIRECTORY_OF_THE_PROGRAMS."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

from results import Results
from stages import GROUPS, SETTINGS, SIDES, STAGES, WHOLE

PROGRAMS = pathlib.Path(sys.argv.pop())
SMALLEST = str(SIDES[0])


def run(name, *arguments):
    return subprocess.run([PROGRAMS / name, *arguments], text=True, capture_output=True)


class Programs(unittest.TestCase):
    def test_benchmarks_measure_every_stage_that_the_tables_name(self):
        out = run("vorund_benchmarks", f"--benchmark_filter=/{SMALLEST}$",
                  "--benchmark_min_time=0.001", "--benchmark_format=json")
        self.assertEqual(out.returncode, 0, out.stderr)
        results = Results()
        results.add(out.stdout)
        for stage in [*STAGES, WHOLE]:
            for settings in SETTINGS:
                with self.subTest(stage=stage, settings=settings):
                    key = (stage, "library", settings, SIDES[0])
                    self.assertIsNone(results.reason(*key))
                    self.assertGreater(results.time(*key), 0.0)
        # Every group has a stage with a plain version.
        for _, stages in GROUPS.values():
            self.assertGreater(results.ratio(stages, "default", SIDES[0]), 0.0)
        self.assertGreater(results.ratio([WHOLE], "default", SIDES[0]), 0.0)

    def test_inputs_are_exported_and_the_flow_runs_on_their_map(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(run("export_inputs", SMALLEST, "default", folder).returncode, 0)
            names = {path.name for path in pathlib.Path(folder).iterdir()}
            self.assertEqual(names, {"boundary.npy", "denoised.npy", "fill_seeds.npy", "map.png",
                                     "markers.npy", "ridges.npy"})
            out = run("map_flow", "--rounds", "1", f"{folder}/map.png", f"{folder}/none.png")
        measured, failed = json.loads(out.stdout)
        self.assertEqual(measured["megapixels"], 0.25)
        self.assertGreater(measured["library_s"], 0.0)
        self.assertGreater(measured["plain_s"], 0.0)
        self.assertIn("none.png", failed["error"])

    def test_memory_is_at_least_that_of_the_label_image(self):
        out = run("flow_memory", SMALLEST, "default")
        self.assertEqual(out.returncode, 0, out.stderr)
        # 32-bit labels of all pixels are part of the result.
        self.assertGreaterEqual(json.loads(out.stdout)["bytes_per_pixel"], 4.0)

    def test_unknown_settings_are_told(self):
        for arguments in (["flow_memory", SMALLEST, "thin"],
                          ["map_flow", "--settings", "thin", "map.png"]):
            out = run(*arguments)
            self.assertNotEqual(out.returncode, 0)
            self.assertIn("no settings are called thin", out.stderr)


if __name__ == "__main__":
    unittest.main()
