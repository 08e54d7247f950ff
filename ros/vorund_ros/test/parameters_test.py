"""The settings file and the parameters."""

import pathlib

import ros_world as world
from ros_world import row_of_rooms

import rospy


class Parameters(world.Case):

    def rooms_with(self, *arguments):
        self.publish(row_of_rooms(2))
        self.start_node(*arguments)
        return len(self.listen().next().rooms)

    def settings(self, text):
        path = world.HOME / (self.space[1:] + ".yaml")
        path.write_text(text)
        return "_config:=" + str(path)

    def test_a_settings_file_counts(self):
        path = self.settings("rooms: {narrow_ratio: 0.2, doorways: false}\n")
        self.assertEqual(self.rooms_with(path), 1)

    def test_a_key_is_a_parameter_and_wins_over_the_file(self):
        path = self.settings("rooms: {narrow_ratio: 0.2, doorways: false}\n")
        self.assertEqual(self.rooms_with(path, "_rooms/narrow_ratio:=0.7"), 2)

    def test_a_settings_file_may_be_loaded_as_parameters(self):
        default = pathlib.Path(world.SOURCE).resolve().parent.parent / "config/default.yaml"
        if not default.exists():
            self.skipTest("the libraries' own settings file is not here")
        world.subprocess.run(["/usr/bin/rosparam", "load", str(default), self.space + "/vorund"],
                             check=True)
        rospy.set_param(self.space + "/vorund/rooms/narrow_ratio", 0.2)
        rospy.set_param(self.space + "/vorund/rooms/doorways", False)
        self.publish(row_of_rooms(2))
        node = self.start_node()
        self.assertEqual(len(self.listen().next().rooms), 1)
        self.assertEqual(node.with_text("no such parameter"), [])

    def test_a_wrong_value_ends_the_node_with_one_line(self):
        node = self.start_node("_dilate_binary/iterations:=-1", wait=False)
        self.assertEqual(node.wait(), 1)
        lines = node.with_text("[FATAL]")
        self.assertEqual(len(lines), 1)
        self.assertIn("~dilate_binary/iterations: is -1 (permitted: ", lines[0])

    def test_a_missing_file_ends_the_node_with_one_line(self):
        node = self.start_node("_config:=/nowhere/settings.yaml", wait=False)
        self.assertEqual(node.wait(), 1)
        self.assertIn("/nowhere/settings.yaml: No such file or directory",
                      node.with_text("[FATAL]")[0])

    def test_a_parameter_that_nobody_reads_is_told(self):
        node = self.start_node("_speed:=3", "_merge_edges_in_place/lenght_threshold:=1.0")
        for name in ("speed", "merge_edges_in_place/lenght_threshold"):
            lines = node.with_text("~%s: no such parameter, not read" % name)
            self.assertEqual(len(lines), 1, node.lines)
            self.assertIn("WARN", lines[0])

    def test_stage_images_are_written_on_request(self):
        folder = world.HOME / "stages"
        self.rooms_with("_debug/save_images:=true", "_debug_dir:=" + str(folder))
        self.assertTrue((folder / "30cpp_ridges.png").exists())

    def test_a_home_for_the_rooms_is_found(self):
        self.publish(row_of_rooms(2))
        node = world.Process([world.executable("vorund_node"), "__ns:=" + self.space])
        self.addCleanup(node.kill_if_running)
        node.wait_for("2 rooms, ")
        self.assertEqual(node.stop(), 0)
        self.assertTrue((world.HOME / "vorund" / (self.space[1:] + "_vorund.rooms")).exists())


if __name__ == "__main__":
    world.main()
