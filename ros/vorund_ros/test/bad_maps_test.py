"""Maps that cannot be used: one error line, a diagnosis, and the last good rooms stay."""

import math

import ros_world as world
from ros_world import map_of, row_of_rooms

import numpy
from diagnostic_msgs.msg import DiagnosticStatus


def changed(change):
    grid = row_of_rooms(3)
    change(grid)
    return grid


def resolution(value):
    return changed(lambda grid: setattr(grid.info, "resolution", value))


def cut(grid):
    grid.data = grid.data[:-1]


def tilt(grid):
    grid.info.origin.orientation.x = 0.5


def lose_origin(grid):
    grid.info.origin.position.x = math.nan


BAD_MAPS = {
    "no cells": (map_of(numpy.zeros((0, 0))), "the map is empty (0 x 0 cells)"),
    "no rows": (map_of(numpy.zeros((0, 5))), "the map is empty (5 x 0 cells)"),
    "too few cells": (changed(cut), "cells, but holds"),
    "cells without a size": (changed(lambda grid: setattr(grid.info, "width", 0)), "is empty"),
    "a size beyond 32 bits": (changed(lambda grid: (setattr(grid.info, "width", 2 ** 31),
                                                    setattr(grid.info, "height", 2))),
                              "cells, but holds"),
    "resolution NaN": (resolution(math.nan), "resolution"),
    "resolution 0": (resolution(0.0), "resolution"),
    "resolution below 0": (resolution(-0.05), "resolution"),
    "resolution infinite": (resolution(math.inf), "resolution"),
    "resolution 1e-9": (resolution(1e-9), "1 m^2"),
    "resolution 1e9": (resolution(1e9), "too large to be worked on"),
    "origin NaN": (changed(lose_origin), "origin is not finite"),
    "origin tilted": (changed(tilt), "origin is tilted"),
    "all unknown": (map_of(numpy.full((80, 80), -1)), "no free floor found"),
    "all wall": (map_of(numpy.full((80, 80), 100)), "no free floor found"),
    "tiny": (map_of(numpy.zeros((3, 3))), "1 m^2"),
    "floor narrower than a robot": (map_of(numpy.where(numpy.arange(6400).reshape(80, 80) == 3240,
                                                       0, 100)), "no room found"),
}


class BadMaps(world.Case):

    def test_each_gives_one_line_and_a_diagnosis(self):
        node = self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        good = graphs.next()
        for number, (name, (grid, cause)) in enumerate(BAD_MAPS.items(), 1):
            with self.subTest(name):
                self.publish(grid)
                node.wait_for("[ERROR]", number)
                line = node.with_text("[ERROR]")[-1]
                self.assertIn("No rooms found: ", line)
                self.assertIn(cause, line)
                problem = line.split("No rooms found: ")[1]
                status = self.wait_for_diagnosis(
                    lambda status: status.level == DiagnosticStatus.ERROR
                    and status.message == "no rooms found: " + problem)
                self.assertEqual(world.values_of(status)["runs failed"], str(number))
                self.assertTrue(graphs.is_empty())
                self.assertEqual(self.listen().next().map_hash, good.map_hash)
        # The first map again: its rooms are still there, and all is well.
        self.publish(row_of_rooms(2))
        status = self.wait_for_diagnosis(lambda status: status.level == DiagnosticStatus.OK)
        self.assertEqual(status.message, "rooms found")
        self.assertTrue(graphs.is_empty())
        # And another one gives others.
        self.publish(row_of_rooms(3))
        self.assertEqual(len(graphs.next().rooms), 3)
        self.assertEqual(len(node.with_text("[ERROR]")), len(BAD_MAPS))
        self.assertEqual(node.stop(), 0)

    def test_a_bad_map_told_again_gives_no_other_line(self):
        node = self.start_node()
        graphs = self.listen()
        self.publish(map_of(numpy.full((80, 80), -1)))
        node.wait_for("[ERROR]")
        for _ in range(3):
            self.publish(map_of(numpy.full((80, 80), -1)))
        self.publish(row_of_rooms(2))
        graphs.next()
        self.assertEqual(len(node.with_text("[ERROR]")), 1)

    def test_a_bad_map_may_be_the_first(self):
        self.publish(map_of(numpy.full((80, 80), -1)))
        node = self.start_node()
        node.wait_for("No rooms found: no free floor found")
        self.publish(row_of_rooms(2))
        self.assertEqual(len(self.listen().next().rooms), 2)


if __name__ == "__main__":
    world.main()
