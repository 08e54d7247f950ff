"""Rooms that were saved come back after a restart, if they still are those of the map."""

import signal

import ros_world as world
from ros_world import row_of_rooms


class Restart(world.Case):

    def first_run(self, grid=None, *arguments):
        """Has the rooms of a map saved, and ends the node. @return the graph."""
        self.publish(grid or row_of_rooms(2))
        node = self.start_node(*arguments)
        graph = self.listen().next()
        self.wait_until_saved()
        self.assertEqual(node.stop(), 0)
        return graph

    def wait_until_saved(self):
        end = world.time.monotonic() + world.PATIENCE
        while not self.save_path.exists():
            self.assertLess(world.time.monotonic(), end)
            world.time.sleep(0.02)

    def was_restored(self, node):
        """Whether the node restored its rooms instead of finding them; waits for either."""
        node.wait_for(" rooms, ")
        if "restored from " + str(self.save_path) not in node.with_text(" rooms, ")[0]:
            return False
        self.assertEqual(node.with_text("Starting floor plan segmentation"), [])
        return True

    def test_rooms_of_the_same_map_are_restored(self):
        graph = self.first_run(row_of_rooms(3, x=4.0, yaw=0.3))
        node = self.start_node()
        self.assertEqual(self.listen().next(), graph)
        self.assertTrue(self.was_restored(node))
        outputs = {topic: self.listen(topic).next() for topic in world.OUTPUTS}
        self.assertEqual(world.labels_of(outputs["rooms/image"]).max(), 3)
        self.assertEqual(world.cells_of(outputs["rooms"]).max(), 3)

    def test_they_are_there_after_the_node_was_killed(self):
        self.publish(row_of_rooms(2))
        node = self.start_node()
        self.listen().next()
        self.wait_until_saved()
        node.stop(signal.SIGKILL)
        self.assertTrue(self.was_restored(self.start_node()))

    def test_rooms_of_another_map_are_not(self):
        self.first_run(row_of_rooms(2))
        self.publish(row_of_rooms(3))
        node = self.start_node()
        self.assertFalse(self.was_restored(node))
        self.assertEqual(len(self.listen().next().rooms), 3)

    def test_rooms_of_other_settings_are_not(self):
        self.first_run()
        node = self.start_node("_merge_nodes_in_place/area_threshold:=1.5")
        self.assertFalse(self.was_restored(node))

    def test_rooms_of_another_threshold_are_not(self):
        self.first_run()
        node = self.start_node("_occupied_threshold:=51")
        self.assertFalse(self.was_restored(node))

    def test_nothing_is_published_before_the_map_comes(self):
        self.first_run()
        self.publishers.pop("map").unregister()
        node = self.start_node()
        graphs = self.listen()
        self.wait_for_diagnosis(lambda status: status.message == "no map yet")
        self.assertTrue(graphs.is_empty())
        self.publish(row_of_rooms(2))
        self.assertTrue(self.was_restored(node))

    def test_a_damaged_file_is_told_and_written_anew(self):
        self.first_run()
        whole = self.save_path.read_bytes()
        self.save_path.write_bytes(whole[:-1] + bytes([whole[-1] ^ 1]))
        node = self.start_node()
        self.assertFalse(self.was_restored(node))
        self.assertEqual(len(node.with_text("Saved rooms are not used: %s: was cut or changed"
                                            % self.save_path)), 1)
        self.assertEqual(node.stop(), 0)
        self.assertTrue(self.was_restored(self.start_node()))

    def test_a_file_that_cannot_be_written_is_told_and_rooms_go_out(self):
        (world.HOME / "no_folder").write_text("a file")
        self.save_path = world.HOME / "no_folder" / "x.rooms"
        self.publish(row_of_rooms(2))
        node = self.start_node()
        self.assertEqual(len(self.listen().next().rooms), 2)
        node.wait_for("Rooms are not saved: ")
        status = self.wait_for_diagnosis(lambda status: status.level == 1)
        self.assertIn("rooms are not saved: " + str(self.save_path), status.message)

    def test_without_a_path_nothing_is_saved(self):
        self.save_path = ""
        self.publish(row_of_rooms(2))
        node = self.start_node()
        node.wait_for("2 rooms, ")
        self.assertEqual(node.stop(), 0)
        self.assertFalse((world.HOME / "vorund").exists())


if __name__ == "__main__":
    world.main()
