"""Maps in, rooms out: by topics, with geometry."""

import math

import ros_world as world
from ros_world import in_frame, middle, row_of_rooms

import numpy
import rospy
from geometry_msgs.msg import PointStamped
from visualization_msgs.msg import Marker
from vorund_msgs.srv import RoomAt


class Maps(world.Case):

    def room_at(self, x, y, frame=""):
        point = PointStamped()
        point.header.frame_id = frame
        point.point.x, point.point.y = x, y
        return self.call("room_at", RoomAt, point=point)

    def outputs_of(self, grid, *arguments):
        """All four outputs for a latched map."""
        self.publish(grid)
        self.start_node(*arguments)
        return {topic: self.listen(topic).next() for topic in world.OUTPUTS}

    def test_a_latched_map_gives_rooms(self):
        grid = row_of_rooms(2)
        graph = self.outputs_of(grid)["room_graph"]
        self.assertEqual([room.label for room in graph.rooms], [1, 2])
        self.assertEqual([list(room.neighbours) for room in graph.rooms], [[2], [1]])
        # Two rooms of 9 m2 and a doorway of 0.2 m by 0.8 m.
        area = sum(room.area for room in graph.rooms) + graph.unreached_area
        self.assertAlmostEqual(area, 18.16, places=6)
        self.assertEqual(graph.header.frame_id, "map")
        self.assertEqual(graph.header.stamp, grid.header.stamp)
        self.assertEqual(graph.info, grid.info)
        self.assertTrue(graph.cells_are_labels)

    def test_a_live_map_gives_rooms(self):
        self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        self.assertEqual(len(graphs.next().rooms), 2)
        self.publish(row_of_rooms(3))
        self.assertEqual(len(graphs.next().rooms), 3)

    def test_who_comes_late_has_everything_too(self):
        self.publish(row_of_rooms(2))
        self.start_node()
        self.listen().next()
        for topic in world.OUTPUTS:
            self.listen(topic).next()

    def check_geometry(self, grid):
        outputs = self.outputs_of(grid)
        graph, cells = outputs["room_graph"], world.cells_of(outputs["rooms"])
        labels = world.labels_of(outputs["rooms/image"])
        self.assertEqual(len(graph.rooms), 3)

        # The image is upright, the cells begin with the lowest row; both say the same.
        numpy.testing.assert_array_equal(numpy.where(cells < 0, 0, cells)[::-1], labels)
        self.assertEqual(outputs["rooms"].info, grid.info)
        # What is no floor belongs to no room.
        floor = world.cells_of(grid) == 0
        self.assertTrue((cells[~floor] == -1).all())

        seen = set()
        for i in range(3):
            x, y = middle(i)
            resolution = grid.info.resolution
            label = int(cells[int(y / resolution), int(x / resolution)])
            self.assertGreater(label, 0)
            answer = self.room_at(*in_frame(grid, x, y))
            self.assertTrue(answer.success)
            self.assertEqual(answer.label, label)
            self.assertEqual(answer.room.label, label)
            # The room's own place lies in it, and well within its walls.
            place = graph.rooms[label - 1].position
            self.assertEqual(self.room_at(place.x, place.y).label, label)
            middle_x, middle_y = in_frame(grid, x, y)
            self.assertLess(math.hypot(place.x - middle_x, place.y - middle_y), 1.0)
            seen.add(label)
        self.assertEqual(seen, {1, 2, 3})

        # Doors: through the middle of the walls between the rooms, as wide as they are drawn.
        for i, border in enumerate(sorted(graph.borders, key=lambda b: self.along(grid, b))):
            self.assertTrue(border.has_door)
            door_x, door_y = in_frame(grid, 3.6 + 3.2 * i, 2.0)
            self.assertLess(math.hypot(border.door_center.x - door_x,
                                       border.door_center.y - door_y), 0.3)
            self.assertAlmostEqual(border.door_width, 0.8, delta=0.15)
        self.assertEqual(len(graph.borders), 2)
        # Beyond the walls there is nothing.
        self.assertEqual(self.room_at(*in_frame(grid, 0.1, 0.1)).label, 0)
        self.assertEqual(self.room_at(*in_frame(grid, -5.0, 2.0)).label, 0)
        self.check_markers(outputs["room_markers"], grid, graph)

    def along(self, grid, border):
        x0, y0 = in_frame(grid, 0, 0)
        return math.hypot(border.door_center.x - x0, border.door_center.y - y0)

    def check_markers(self, array, grid, graph):
        self.assertEqual(array.markers[0].action, Marker.DELETEALL)
        by_name = {}
        for marker in array.markers[1:]:
            by_name.setdefault(marker.ns, []).append(marker)
        self.assertEqual({name: len(markers) for name, markers in by_name.items()},
                         {"rooms": 3, "outlines": 1, "numbers": 3, "doors": 1})
        for marker in by_name["rooms"]:
            corners = numpy.array([[p.x, p.y] for p in marker.points]).reshape(-1, 3, 2)
            a, b, c = corners[:, 0], corners[:, 1], corners[:, 2]
            areas = ((b - a)[:, 0] * (c - a)[:, 1] - (c - a)[:, 0] * (b - a)[:, 1]) / 2
            self.assertAlmostEqual(areas.sum(), graph.rooms[marker.id - 1].area, places=6)
            # The corners lie in or at the edge of the building, wherever it has been turned to.
            yaw = 2 * math.atan2(grid.info.origin.orientation.z, grid.info.origin.orientation.w)
            shifted = corners.reshape(-1, 2) - [grid.info.origin.position.x,
                                                grid.info.origin.position.y]
            own_y = -math.sin(yaw) * shifted[:, 0] + math.cos(yaw) * shifted[:, 1]
            self.assertAlmostEqual(own_y.min(), 0.5, places=4)
            self.assertAlmostEqual(own_y.max(), 3.5, places=4)
        for marker in by_name["numbers"]:
            self.assertTrue(marker.text.startswith("%d\n" % marker.id))

    def test_geometry(self):
        self.check_geometry(row_of_rooms(3))

    def test_geometry_with_a_turned_origin(self):
        self.check_geometry(row_of_rooms(3, x=-12.3, y=45.6, yaw=0.7))

    def test_geometry_turned_upside_down(self):
        self.check_geometry(row_of_rooms(3, x=100.0, y=-7.0, yaw=math.pi))

    def test_geometry_at_ten_centimetres(self):
        self.check_geometry(row_of_rooms(3, resolution=0.1, yaw=-1.2))

    def test_geometry_at_two_centimetres(self):
        self.check_geometry(row_of_rooms(3, resolution=0.02, x=3.0))

    def test_probabilities_are_told_apart_at_the_threshold(self):
        self.publish(row_of_rooms(2, wall=60, floor=40))
        self.start_node("_occupied_threshold:=50")
        self.assertEqual(len(self.listen().next().rooms), 2)

    def test_a_threshold_above_the_walls_finds_none(self):
        # Below the threshold the walls are floor: what is left is one room.
        self.publish(row_of_rooms(2, wall=60, floor=40))
        self.start_node("_occupied_threshold:=70")
        self.assertEqual(len(self.listen().next().rooms), 1)

    def test_the_same_map_again_changes_nothing(self):
        node = self.start_node()
        graphs = self.listen()
        grid = row_of_rooms(2)
        self.publish(grid)
        first = graphs.next()
        grid.header.stamp = rospy.Time(9999)  # A map server that tells it once more.
        self.publish(grid)
        self.publish(row_of_rooms(3))
        self.assertNotEqual(graphs.next().map_hash, first.map_hash)
        self.assertTrue(graphs.is_empty())
        node.wait_for("3 rooms, ")
        self.assertEqual(len(node.with_text("2 rooms, ")), 1)

    def test_a_point_of_another_frame_is_refused(self):
        self.outputs_of(row_of_rooms(2))
        self.assertTrue(self.room_at(2, 2, "map").success)
        answer = self.room_at(2, 2, "odom")
        self.assertFalse(answer.success)
        self.assertEqual(answer.message, "the point is in the frame odom, the rooms are in map")

    def test_no_room_holds_a_point_before_there_are_any(self):
        self.start_node()
        answer = self.room_at(2, 2)
        self.assertFalse(answer.success)
        self.assertEqual(answer.message, "there are no rooms yet")

    def test_the_node_ends_well(self):
        self.publish(row_of_rooms(2))
        node = self.start_node()
        self.listen().next()
        self.assertEqual(node.stop(), 0)
        self.assertEqual(node.with_text("[ERROR]") + node.with_text("[FATAL]"), [])

    def test_the_node_ends_well_during_a_run(self):
        self.publish(world.big_hall())
        node = self.start_node()
        node.wait_for("Starting floor plan segmentation")
        self.assertEqual(node.stop(), 0)
        self.assertEqual(node.with_text("[ERROR]"), [])


if __name__ == "__main__":
    world.main()
