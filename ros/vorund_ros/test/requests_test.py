"""Services and the action."""

import pathlib

import ros_world as world
from ros_world import map_of, row_of_rooms

import numpy
from actionlib import ActionClient, CommState
from actionlib_msgs.msg import GoalStatus
from vorund_msgs.msg import FindRoomsAction, FindRoomsActionFeedback, FindRoomsGoal
from vorund_msgs.srv import LoadRooms, SaveRooms, SegmentMap

STAGES = ["denoise", "dilate", "ridges", "scales", "over-segment", "fill", "restore", "finished",
          "separate", "islands", "merge-passages", "cuts"]


class Segmenting(world.Case):

    def test_a_given_map_is_segmented_and_nothing_published(self):
        self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(3))
        graphs.next()
        answer = self.call("segment_map", SegmentMap, map=row_of_rooms(2))
        self.assertTrue(answer.success, answer.message)
        self.assertEqual(len(answer.graph.rooms), 2)
        self.assertEqual(world.labels_of(answer.image).max(), 2)
        self.assertEqual(world.cells_of(answer.rooms).max(), 2)
        self.assertTrue(graphs.is_empty())
        self.assertEqual(len(self.listen().next().rooms), 3)

    def test_a_bad_map_is_answered_with_its_cause(self):
        node = self.start_node()
        answer = self.call("segment_map", SegmentMap, map=map_of(numpy.zeros((0, 0))))
        self.assertFalse(answer.success)
        self.assertEqual(answer.message, "the map is empty (0 x 0 cells)")
        self.assertEqual(answer.graph.rooms, [])
        self.assertTrue(self.call("segment_map", SegmentMap, map=row_of_rooms(1)).success)
        self.assertTrue(node.is_running())

    def test_the_result_is_that_of_the_topic(self):
        self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(3, x=2.0, yaw=0.5))
        answer = self.call("segment_map", SegmentMap, map=row_of_rooms(3, x=2.0, yaw=0.5))
        published = graphs.next()
        self.assertEqual(answer.graph.rooms, published.rooms)
        self.assertEqual(answer.graph.borders, published.borders)
        self.assertEqual(answer.image, self.listen("rooms/image").next())

    def test_the_node_ends_during_a_call(self):
        import threading
        import rospy
        node = self.start_node()
        failures = []

        def call():
            try:
                answer = self.call("segment_map", SegmentMap, map=world.big_hall())
                failures.append(answer.success)
            except rospy.ServiceException:
                failures.append(False)

        caller = threading.Thread(target=call)
        caller.start()
        node.wait_for("Starting floor plan segmentation")
        self.assertEqual(node.stop(), 0)
        caller.join(world.PATIENCE)
        self.assertEqual(failures, [False])


class Action(world.Case):

    def setUp(self):
        super().setUp()
        self.node = self.start_node()
        # Not the simple client: that one misses a goal's end before its call to send returns.
        self.client = ActionClient(self.space + "/vorund/find_rooms", FindRoomsAction)
        self.assertTrue(self.client.wait_for_server(world.rospy.Duration(world.PATIENCE)))

    def send(self, grid):
        return self.client.send_goal(FindRoomsGoal(map=grid))

    def wait_until(self, goal, state):
        end = world.time.monotonic() + world.PATIENCE
        while goal.get_comm_state() != state:
            self.assertLess(world.time.monotonic(), end)
            world.time.sleep(0.01)

    def wait(self, goal):
        self.wait_until(goal, CommState.DONE)
        return goal.get_result()

    def listen_to_feedback(self):
        """All of it: the client drops what comes after the result, which has a connection of its
        own and may overtake it."""
        return self.listen("vorund/find_rooms/feedback", FindRoomsActionFeedback)

    def test_a_goal_gives_rooms_and_tells_every_stage(self):
        messages = self.listen_to_feedback()
        goal = self.send(row_of_rooms(2))
        result = self.wait(goal)
        self.assertEqual(goal.get_goal_status(), GoalStatus.SUCCEEDED)
        self.assertEqual(len(result.graph.rooms), 2)
        self.assertEqual(world.labels_of(result.image).max(), 2)
        told = [messages.next().feedback]
        while told[-1].stage != STAGES[-1]:
            told.append(messages.next().feedback)
        self.assertEqual(list(dict.fromkeys(feedback.stage for feedback in told)), STAGES)
        for feedback in told:
            self.assertEqual(STAGES[feedback.number - 1], feedback.stage)
            self.assertEqual(feedback.stages, len(STAGES))
            self.assertLessEqual(feedback.done, feedback.total)

    def test_a_bad_map_aborts(self):
        goal = self.send(map_of(numpy.full((80, 80), -1)))
        self.assertEqual(self.wait(goal).message, "no free floor found")
        self.assertEqual(goal.get_goal_status(), GoalStatus.ABORTED)
        self.assertEqual(goal.get_goal_status_text(), "no free floor found")

    def test_a_goal_is_cancelled_during_its_run(self):
        messages = self.listen_to_feedback()
        goal = self.send(world.big_hall())
        messages.next()
        # Cancelled earlier, it counts as lost with the next status that does not know it yet.
        self.wait_until(goal, CommState.ACTIVE)
        goal.cancel()
        result = self.wait(goal)
        self.assertEqual(goal.get_goal_status(), GoalStatus.PREEMPTED)
        self.assertEqual(result.message, "cancelled")
        self.assertEqual(result.graph.rooms, [])
        self.assertEqual(self.node.with_text("Segment finish"), [])
        # The next one runs as ever.
        self.assertEqual(len(self.wait(self.send(row_of_rooms(2))).graph.rooms), 2)

    def test_a_goal_is_cancelled_before_it_begins(self):
        self.publish(world.big_hall())  # Keeps the node busy.
        self.node.wait_for("Starting floor plan segmentation")
        goal = self.send(row_of_rooms(2))
        # A request to cancel that overtakes its goal would be answered by the action library.
        self.wait_until(goal, CommState.PENDING)
        goal.cancel()
        self.assertEqual(self.wait(goal).message, "cancelled before it began")
        self.assertIn(goal.get_goal_status(), (GoalStatus.RECALLED, GoalStatus.PREEMPTED))

    def test_a_newer_goal_takes_the_place_of_an_older_one(self):
        older = self.send(world.big_hall())
        self.wait_until(older, CommState.ACTIVE)
        newer = self.send(row_of_rooms(2))
        self.assertEqual(len(self.wait(newer).graph.rooms), 2)
        self.wait(older)
        self.assertEqual(older.get_goal_status(), GoalStatus.PREEMPTED)

    def test_maps_and_goals_do_not_stop_each_other(self):
        graphs = self.listen()
        goal = self.send(row_of_rooms(3))
        self.publish(row_of_rooms(2))
        self.assertEqual(len(graphs.next().rooms), 2)
        self.assertEqual(len(self.wait(goal).graph.rooms), 3)


class SavingAndLoading(world.Case):

    def test_rooms_are_saved_and_loaded_again(self):
        self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        graph = graphs.next()
        path = str(world.HOME / "folder" / "own.rooms")
        answer = self.call("save_rooms", SaveRooms, path=path)
        self.assertTrue(answer.success, answer.message)
        self.assertEqual(answer.message, "2 rooms saved to " + path)
        answer = self.call("load_rooms", LoadRooms, path=path)
        self.assertTrue(answer.success, answer.message)
        self.assertEqual(answer.message, "2 rooms loaded from " + path)
        self.assertEqual(graphs.next().rooms, graph.rooms)

    def test_rooms_are_loaded_by_a_node_without_a_map(self):
        first = self.start_node()
        self.publish(row_of_rooms(2))
        graph = self.listen().next()
        path = str(world.HOME / "moved.rooms")
        self.assertTrue(self.call("save_rooms", SaveRooms, path=path).success)
        first.stop()
        self.publishers.pop("map").unregister()
        self.save_path = ""
        second = self.start_node()
        self.assertTrue(self.call("load_rooms", LoadRooms, path=path).success)
        self.assertEqual(self.listen().next().rooms, graph.rooms)
        # Their map comes: nothing is found anew. Another one is.
        self.publish(row_of_rooms(2))
        self.publish(row_of_rooms(3))
        self.listen().next_that(lambda graph: len(graph.rooms) == 3)
        self.assertEqual(second.with_text("2 rooms, "), [])

    def test_rooms_of_another_map_are_refused(self):
        self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        graphs.next()
        path = str(world.HOME / "two.rooms")
        self.call("save_rooms", SaveRooms, path=path)
        self.publish(row_of_rooms(3))
        graphs.next()
        answer = self.call("load_rooms", LoadRooms, path=path)
        self.assertFalse(answer.success)
        self.assertEqual(answer.message, path + ": holds the rooms of another map")
        self.assertTrue(graphs.is_empty())

    def test_what_cannot_be_is_answered(self):
        self.start_node()
        self.assertEqual(self.call("save_rooms", SaveRooms).message,
                         "there are no rooms to save yet")
        self.assertEqual(self.call("load_rooms", LoadRooms, path="/nowhere/x").message,
                         "/nowhere/x: No such file or directory")
        self.publish(row_of_rooms(2))
        self.listen().next()
        precious = pathlib.Path(world.HOME / "precious.txt")
        precious.write_text("keep me")
        answer = self.call("save_rooms", SaveRooms, path=str(precious))
        self.assertFalse(answer.success)
        self.assertIn("is there already and holds no saved rooms", answer.message)
        self.assertEqual(precious.read_text(), "keep me")


if __name__ == "__main__":
    world.main()
