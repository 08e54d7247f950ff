"""The launch files, on an example map."""

import ros_world as world

import rospy
from nav_msgs.msg import OccupancyGrid
from vorund_msgs.msg import RoomGraph


class Launch(world.Case):

    def launch(self, *arguments):
        launch = world.Process(["/usr/bin/roslaunch", *arguments])
        self.addCleanup(launch.stop)  # Killed, it would leave its nodes behind.
        return launch

    def check_rooms(self, launch):
        launch.wait_for(" rooms, ")
        grid = rospy.wait_for_message("/map", OccupancyGrid, world.PATIENCE)
        graph = rospy.wait_for_message("/room_graph", RoomGraph, world.PATIENCE)
        self.assertEqual(graph.info, grid.info)
        self.assertEqual(graph.header.frame_id, "map")
        # The offices of the example and the corridor: several rooms, each joined to another.
        self.assertGreater(len(graph.rooms), 5)
        self.assertTrue(all(room.neighbours for room in graph.rooms))
        floor = sum(cell == 0 for cell in grid.data) * round(grid.info.resolution, 6) ** 2
        rooms = sum(room.area for room in graph.rooms)
        self.assertAlmostEqual(rooms / floor, 1.0, delta=0.1)

    def test_the_example(self):
        launch = self.launch("vorund_ros", "example.launch", "rviz:=false")
        self.check_rooms(launch)
        launch.stop()
        self.assertEqual(launch.with_text("[ERROR]") + launch.with_text("[FATAL]"), [])

    def test_a_map_publisher_of_ones_own_and_the_nodelet(self):
        publisher = world.Process([world.executable("map_publisher"),
                                   world.SOURCE + "/maps/furnished.yaml"])
        self.addCleanup(publisher.kill_if_running)
        launch = self.launch("vorund_ros", "rooms.launch", "nodelet:=true")
        self.check_rooms(launch)
        launch.stop()
        self.assertEqual(publisher.stop(), 0)

    def test_a_map_file_that_is_missing_is_told(self):
        publisher = world.Process([world.executable("map_publisher"), "/nowhere/map.yaml"])
        self.assertEqual(publisher.wait(), 1)
        self.assertIn("/nowhere/map.yaml", publisher.with_text("[FATAL]")[0])
        publisher = world.Process([world.executable("map_publisher")])
        self.assertEqual(publisher.wait(), 1)
        self.assertIn("Usage: map_publisher MAP", publisher.with_text("[FATAL]")[0])


if __name__ == "__main__":
    world.main()
