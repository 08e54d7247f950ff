"""What is made of the programs' output."""

import json
import pathlib
import tempfile
import unittest

import maps
import tables
from results import Results


def entry(name, cpu_time, unit="ms", **more):
    return {"name": name, "run_name": name, "run_type": "iteration", "cpu_time": cpu_time,
            "time_unit": unit, **more}


def results_of(*entries):
    results = Results()
    results.add(json.dumps({"benchmarks": entries}))
    return results


class TestResults(unittest.TestCase):
    def test_times_are_seconds_per_megapixel(self):
        results = results_of(entry("scales/library/default/500", 50.0),
                             entry("scales/library/default/2000", 2.0, "s"))
        self.assertAlmostEqual(results.time("scales", "library", "default", 500), 0.2)
        self.assertAlmostEqual(results.time("scales", "library", "default", 2000), 0.5)

    def test_the_best_of_all_runs_counts(self):
        results = results_of(entry("scales/library/default/1000", 30.0),
                             entry("scales/library/default/1000", 20.0))
        results.add(json.dumps({"benchmarks": [entry("scales/library/default/1000", 25.0)]}))
        self.assertAlmostEqual(results.time("scales", "library", "default", 1000), 0.02)

    def test_means_of_several_runs_are_no_runs(self):
        mean = entry("scales/library/default/1000", 1.0)
        results = results_of({**mean, "run_type": "aggregate"})
        self.assertIsNone(results.time("scales", "library", "default", 1000))

    def test_what_is_left_out_has_a_reason(self):
        results = results_of(entry("whole/library/default/2000", 0.0, error_occurred=True,
                                   error_message="too many rooms"))
        self.assertIsNone(results.time("whole", "library", "default", 2000))
        self.assertEqual(results.reason("whole", "library", "default", 2000), "too many rooms")
        self.assertIsNone(results.reason("whole", "library", "default", 1000))

    def test_ratios_are_over_stages_with_a_plain_version(self):
        results = results_of(entry("load/library/default/1000", 1000.0),
                             entry("denoise/library/default/1000", 2.0),
                             entry("denoise/plain/default/1000", 6.0),
                             entry("dilate/library/default/1000", 2.0),
                             entry("dilate/plain/default/1000", 2.0))
        self.assertAlmostEqual(results.ratio(["load", "denoise", "dilate"], "default", 1000), 2.0)
        self.assertIsNone(results.ratio(["load"], "default", 1000))

    def test_a_sum_needs_all_its_stages(self):
        results = results_of(entry("first-flood/library/default/1000", 3.0))
        self.assertIsNone(results.sum(["first-flood", "second-flood"], "library", "default", 1000))


class TestTables(unittest.TestCase):
    def test_a_stage_stands_beside_its_budget_and_the_others(self):
        results = results_of(entry("ridges/library/default/1000", 20.0),
                             entry("ridges/plain/default/1000", 60.0),
                             entry("boundary/library/default/1000", 5.0),
                             entry("boundary/plain/default/1000", 15.0))
        lines = tables.stage_table(results, {"ridges": 0.5}).splitlines()
        group = next(line for line in lines if line.startswith("| **ridges** |"))
        self.assertEqual(group, "| **ridges** | 0.010 | 0.0250 | 3.0 × | 25 × | – | – |")
        stage = next(line for line in lines if line.startswith("| boundary |"))
        self.assertEqual(stage, "| boundary |  | 0.0050 | 3.0 × | – | – | – |")

    def test_sizes_are_in_nanoseconds_per_pixel_and_gaps_have_notes(self):
        results = results_of(entry("scales/library/default/500", 50.0),
                             entry("scales/library/default/1000", 100.0),
                             entry("whole/library/default/500", 75.0),
                             entry("whole/library/default/1000", 0.0, error_occurred=True,
                                   error_message="too many rooms"))
        text = tables.size_table(results)
        self.assertIn("| ns per pixel | 0.25 Mpx | 1 Mpx |", text)
        self.assertIn("| scales | 200.0 | 100.0 |", text)
        self.assertIn("| whole | 300.0 | – (1) |", text)
        self.assertTrue(text.endswith("(1) too many rooms"))

    def test_the_command_shows_the_best_of_every_stage(self):
        def run(read, scales):
            return {"megapixels": 2.0, "total": {"wall_s": 9.0, "cpu_s": read + scales},
                    "stages": [{"name": "read", "wall_s": 9.0, "cpu_s": read},
                               {"name": "scales", "wall_s": 9.0, "cpu_s": scales}]}

        lines = tables.command_table([run(0.2, 1.0), run(0.4, 0.6)]).splitlines()
        self.assertEqual(lines[2:], ["| read | 0.1000 |", "| scales | 0.3000 |",
                                     "| **total** | 0.5000 |"])

    def test_the_mean_is_of_seconds_per_megapixel(self):
        small = {"name": "a", "megapixels": 0.5, "library_s": 0.1, "plain_s": 0.2}
        large = {"name": "b", "megapixels": 2.0, "library_s": 0.2, "plain_s": 1.2}
        broken = {"name": "c", "error": "no free floor found"}
        lines = tables.map_table({"default": [small, large, broken]}).splitlines()
        self.assertEqual(lines[2:], ["| a | 0.50 | 0.2000 | 2.0 × |", "| b | 2.00 | 0.1000 | 6.0 × |",
                                     "| c | – | – | – |", "| **mean** |  | 0.1500 | 3.3 × |", "",
                                     "c: no free floor found"])

    def test_a_table_takes_the_place_of_the_former_one(self):
        text = "a\n<!-- begin tables -->\nold\n<!-- end tables -->\nb\n"
        new = tables.between_markers(text, "tables", "new")
        self.assertEqual(new, "a\n<!-- begin tables -->\nnew\n<!-- end tables -->\nb\n")
        with self.assertRaises(ValueError):
            tables.between_markers("nothing", "tables", "new")


class TestMaps(unittest.TestCase):
    def test_variants_and_truths_of_a_folder_are_left_out(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            for file in ("lab_a.png", "lab_a_chairs.png", "lab_a_gt_segmentation.png", "hall.pgm",
                         "notes.txt"):
                (folder / file).touch()
            self.assertEqual([path.name for path in maps.find([folder], False)],
                             ["hall.pgm", "lab_a.png"])
            self.assertEqual([path.name for path in maps.find([folder], True)],
                             ["hall.pgm", "lab_a.png", "lab_a_chairs.png"])
            chairs = folder / "lab_a_chairs.png"
            self.assertEqual(maps.find([chairs], False), [chairs])

    def test_an_image_with_a_map_server_file_is_that_map(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            for file in ("lab.pgm", "lab.yaml", "settings.yaml"):
                (folder / file).touch()
            self.assertEqual(maps.find([folder], False), [folder / "lab.yaml"])

    def test_a_folder_without_maps_is_told(self):
        with tempfile.TemporaryDirectory() as folder, self.assertRaises(SystemExit):
            maps.find([pathlib.Path(folder)], False)


if __name__ == "__main__":
    unittest.main()
