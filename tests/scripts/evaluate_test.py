#!/usr/bin/python3
"""Tests scripts/evaluate with a program that is built: evaluate_test.py VORUND MAKE_PLAN."""

import importlib.machinery
import importlib.util
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

EVALUATE = pathlib.Path(__file__).resolve().parents[2] / "scripts/evaluate"
PROGRAMS = {}

sys.dont_write_bytecode = True


def load():
    """The script as a module."""
    loader = importlib.machinery.SourceFileLoader("evaluate", str(EVALUATE))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("evaluate", loader))
    loader.exec_module(module)
    return module


evaluate = load()


class Halves(unittest.TestCase):
    """What choosing on other maps costs."""

    def test_are_all_where_they_are_few(self):
        self.assertEqual(len(evaluate.halves(list("abcdef"))), 20)

    def test_are_some_where_they_are_many(self):
        maps = [str(i) for i in range(30)]
        ways = evaluate.halves(maps)
        self.assertEqual(len(ways), evaluate.MOST_SPLITS)
        self.assertEqual(ways, evaluate.halves(maps))
        self.assertTrue(all(len(set(way)) == 15 for way in ways))

    def test_give_a_choice_that_is_best_everywhere_nothing_to_lose(self):
        merits = {"good": {"a": 0.9, "b": 0.8}, "bad": {"a": 0.1, "b": 0.2}}
        best, unseen = evaluate.half_and_half(merits)
        self.assertAlmostEqual(best, 0.85)
        self.assertAlmostEqual(unseen, 0.85)

    def test_show_what_is_fitted_to_single_maps(self):
        # Chosen on a, the first is best, and worst on b; and the other way round.
        merits = {"for a": {"a": 1.0, "b": 0.0}, "for b": {"a": 0.0, "b": 1.0}}
        best, unseen = evaluate.half_and_half(merits)
        self.assertAlmostEqual(best, 0.5)
        self.assertAlmostEqual(unseen, 0.0)

    def test_try_all_combinations_of_values(self):
        self.assertEqual(evaluate.choices(["a=1,2", "b=3"]),
                         [["--set=a=1", "--set=b=3"], ["--set=a=2", "--set=b=3"]])
        with self.assertRaises(ValueError):
            evaluate.choices(["a"])


class Folders(unittest.TestCase):
    """Whole runs over plans that are made up."""

    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.temporary.name) / "plans"
        self.folder.mkdir()
        for seed in (1, 2):
            subprocess.run([PROGRAMS["make_plan"], "--family", "offices", "--seed", str(seed),
                            "--out", self.folder], check=True)
        shutil.copy(self.folder / "offices_1.png", self.folder / "offices_1_furnitures.png")

    def tearDown(self):
        self.temporary.cleanup()

    def run_script(self, *options):
        """The ended process."""
        return subprocess.run([EVALUATE, "--program", PROGRAMS["vorund"], *options],
                              capture_output=True, text=True)

    def test_print_a_table_for_each_variant_and_the_means(self):
        out = pathlib.Path(self.temporary.name) / "figures.json"
        run = self.run_script(self.folder, "--json", out)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("plans, bare", run.stdout)
        self.assertIn("plans, furnitures", run.stdout)
        self.assertNotIn("trashbins", run.stdout)
        self.assertTrue(run.stdout.endswith("failed: 0\n"))
        results = json.loads(out.read_text())["results"]
        self.assertEqual([len(result["maps"]) for result in results], [2, 1])
        bare, furnished = (result["maps"]["offices_1"] for result in results)
        self.assertEqual(bare, furnished)
        self.assertGreater(bare["mcc_1to1"], 0.5)

    def test_are_told_of_maps_that_fail(self):
        (self.folder / "offices_2.png").write_text("no image")
        run = self.run_script(self.folder, "--variants", "furnitures")
        self.assertEqual(run.returncode, 0, run.stderr)  # Of that map there is no such variant.
        (self.folder / "offices_1_furnitures.png").write_bytes(
            (self.folder / "offices_1_rooms.png").read_bytes()[:90])
        run = self.run_script(self.folder, "--variants", "furnitures")
        self.assertEqual(run.returncode, 1)
        self.assertIn("offices_1_furnitures.png", run.stdout + run.stderr)

    def test_without_truth_are_segmented_only(self):
        for path in self.folder.glob("*_gt_segmentation.png"):
            path.unlink()
        for path in self.folder.glob("*_rooms.png"):
            path.unlink()
        run = self.run_script(self.folder)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("3 maps", run.stderr)
        self.assertIn("failed: 0", run.stdout)

    def test_keep_detached_rooms_if_their_readme_says_so(self):
        self.assertFalse(evaluate.keeps_detached(self.folder))
        (self.folder / "README.md").write_text("Score with `--keep-detached`.")
        self.assertTrue(evaluate.keeps_detached(self.folder))

    def test_keep_results_and_pictures(self):
        out = pathlib.Path(self.temporary.name) / "out"
        run = self.run_script(self.folder, "--out", out, "--variants", "bare")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertTrue((out / "1_plans/offices_1/rooms.png").exists())
        self.assertTrue((out / "1_plans/errors/offices_2.png").exists())

    def test_that_are_none_are_wrong_usage(self):
        for options in ([self.folder / "none"], [self.folder, "--half", "a"],
                        [self.folder, "--set", "no/such=1"], [self.folder, "--config", "none"]):
            run = self.run_script(*options)
            self.assertEqual(run.returncode, 2, options)
            self.assertEqual(run.stdout, "")

    def test_print_half_and_half(self):
        run = self.run_script(self.folder, "--variants", "bare", "--half",
                              "rooms/open_ratio=0.1,0.5")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("plans, bare: best of 2 choices on all maps ", run.stdout)


if __name__ == "__main__":
    PROGRAMS["vorund"], PROGRAMS["make_plan"] = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
