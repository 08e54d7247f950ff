"""Maps in quick succession, and settings turned while the node runs."""

import ros_world as world
from ros_world import row_of_rooms

import dynamic_reconfigure.client


class Succession(world.Case):

    def test_of_twenty_maps_the_last_one_counts(self):
        node = self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(1))  # Connects.
        graphs.next()
        maps = [row_of_rooms(2 + number % 3, x=float(number)) for number in range(20)]
        for grid in maps:
            self.publish(grid)
        last = graphs.next_that(lambda graph: graph.info == maps[-1].info)
        self.assertEqual(len(last.rooms), 2 + 19 % 3)
        status = self.wait_for_diagnosis(lambda status: status.message == "rooms found")
        values = world.values_of(status)
        self.assertLessEqual(int(values["runs finished"]) + int(values["runs cancelled"]), 21)
        self.assertEqual(values["runs failed"], "0")
        self.assertTrue(graphs.is_empty())
        self.assertEqual(node.with_text("[ERROR]"), [])

    def test_of_twenty_slow_maps_most_are_passed_over(self):
        node = self.start_node()
        graphs = self.listen()
        slow = world.big_hall()
        for number in range(20):
            slow.info.origin.position.x = float(number)
            self.publish(slow)
        self.publish(row_of_rooms(2))
        last = graphs.next_that(lambda graph: len(graph.rooms) == 2)
        self.assertEqual(last.info.width, row_of_rooms(2).info.width)
        # However fast they came: none piled up.
        self.assertLess(len(node.with_text("Starting floor plan segmentation")), 21)

    def test_maps_faster_than_the_runs_still_give_rooms(self):
        self.start_node()
        graphs = self.listen()
        slow = world.big_hall()
        number = 0
        while graphs.is_empty():
            self.assertLess(number, 20 * world.PATIENCE)
            number += 1
            slow.info.origin.position.x = float(number)
            self.publish(slow)
            world.time.sleep(0.2)
        self.assertLess(graphs.next().info.origin.position.x, float(number))

    def test_back_to_the_map_in_force_nothing_is_done(self):
        node = self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        graphs.next()
        self.publish(world.big_hall())
        node.wait_for("Starting floor plan segmentation", 2)
        self.publish(row_of_rooms(2))
        status = self.wait_for_diagnosis(
            lambda status: world.values_of(status)["runs cancelled"] == "1")
        self.assertEqual(status.message, "rooms found")
        self.assertTrue(graphs.is_empty())


class LiveSettings(world.Case):

    def client(self):
        client = dynamic_reconfigure.client.Client(self.space + "/vorund/live",
                                                   timeout=world.PATIENCE)
        self.addCleanup(client.close)
        return client

    def test_rooms_are_found_anew_with_a_changed_setting(self):
        self.start_node("_rooms/doorways:=false")
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        self.assertEqual(len(graphs.next().rooms), 2)
        # The door of 0.8 m is now too wide between two rooms of 3 m.
        self.client().update_configuration({"narrow_ratio": 0.2})
        self.assertEqual(len(graphs.next().rooms), 1)
        self.client().update_configuration({"narrow_ratio": 0.7})
        self.assertEqual(len(graphs.next().rooms), 2)

    def test_live_values_start_from_those_of_the_parameters(self):
        self.start_node("_rooms/narrow_ratio:=0.2", "_rooms/doorways:=false", "_occupied_threshold:=44")
        live = self.client().get_configuration(timeout=world.PATIENCE)
        self.assertEqual(live["narrow_ratio"], 0.2)
        self.assertEqual(live["occupied_threshold"], 44)
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        self.assertEqual(len(graphs.next().rooms), 1)

    def test_an_earlier_nodes_live_values_do_not_count(self):
        node = self.start_node()
        self.client().update_configuration({"narrow_ratio": 0.2})
        node.stop()
        self.start_node()
        graphs = self.listen()
        self.publish(row_of_rooms(2))
        self.assertEqual(len(graphs.next().rooms), 2)


if __name__ == "__main__":
    world.main()
