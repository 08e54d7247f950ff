"""The nodelet: the same as the node, within a manager that lives on when it goes."""

import ros_world as world
from ros_world import row_of_rooms

import rosgraph
from vorund_msgs.srv import SegmentMap


class Nodelet(world.Case):

    def setUp(self):
        super().setUp()
        self.manager = world.Process(["/usr/lib/nodelet/nodelet", "manager", "__name:=manager",
                                      "__ns:=" + self.space])
        self.addCleanup(self.manager.kill_if_running)
        world.rospy.wait_for_service(self.space + "/manager/load_nodelet", world.PATIENCE)

    def load(self, *arguments):
        loader = world.Process(["/usr/lib/nodelet/nodelet", "load", "vorund_ros/RoomsNodelet",
                                "manager", "__name:=vorund", "__ns:=" + self.space,
                                "_save_path:=" + str(self.save_path), *arguments])
        self.addCleanup(loader.kill_if_running)
        return loader

    def wait_until_gone(self):
        """Waits until the nodelet's services are offered no more (load_rooms goes last), and the
        manager still answers."""
        master = rosgraph.Master("/test")
        end = world.time.monotonic() + world.PATIENCE
        while True:
            try:
                master.lookupService(self.space + "/vorund/load_rooms")
            except rosgraph.MasterError:
                break
            self.assertLess(world.time.monotonic(), end, self.manager.lines[-20:])
            world.time.sleep(0.05)
        self.assertTrue(self.manager.is_running())
        world.rospy.wait_for_service(self.space + "/manager/list", world.PATIENCE)

    def test_maps_in_rooms_out_then_unloaded_and_loaded_again(self):
        self.publish(row_of_rooms(2))
        for _ in range(3):
            loader = self.load()
            self.wait_until_up(loader)
            self.assertEqual(len(self.listen().next().rooms), 2)
            loader.stop()  # The loader unloads the nodelet as it ends.
            self.wait_until_gone()
        self.assertEqual(self.manager.stop(), 0)

    def test_it_is_unloaded_during_a_run(self):
        self.publish(world.big_hall())
        for count in range(1, 4):
            loader = self.load()
            self.wait_until_up(loader)
            self.manager.wait_for("Starting floor plan segmentation", count)
            loader.stop()
            self.wait_until_gone()
        self.assertEqual(self.manager.with_text("Segment finish"), [])
        self.assertEqual(self.manager.stop(), 0)

    def test_services_are_served(self):
        self.wait_until_up(self.load())
        answer = self.call("segment_map", SegmentMap, map=row_of_rooms(3))
        self.assertTrue(answer.success, answer.message)
        self.assertEqual(len(answer.graph.rooms), 3)

    def test_wrong_settings_are_told_and_the_manager_lives_on(self):
        self.load("_dilate_binary/iterations:=-1")
        self.manager.wait_for("~dilate_binary/iterations: is -1 (permitted: ")
        self.assertTrue(self.manager.is_running())
        self.assertEqual(self.manager.stop(), 0)


if __name__ == "__main__":
    world.main()
