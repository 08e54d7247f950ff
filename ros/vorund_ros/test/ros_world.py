"""A rosmaster on a free port, nodes started against it, and maps drawn for them.

Import it before rospy: it starts the master of this test process, which goes with it.
"""

import atexit
import glob
import math
import os
import pathlib
import queue
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = os.environ.get("VORUND_ROS_SOURCE", str(HERE.parent))
DEVEL = os.environ["VORUND_ROS_DEVEL"]
MSGS = os.environ.get("VORUND_MSGS_PREFIX") or DEVEL
# [s], after which something that should come is given up; more where programs are emulated.
PATIENCE = float(os.environ.get("VORUND_ROS_PATIENCE", "60"))

os.umask(0o022)
HOME = pathlib.Path(tempfile.mkdtemp(prefix="vorund_ros_"))


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def _prepend(variable, *folders):
    old = [os.environ[variable]] if os.environ.get(variable) else []
    os.environ[variable] = os.pathsep.join([*folders, *old])


os.environ.update(ROS_MASTER_URI="http://127.0.0.1:%d" % _free_port(), ROS_IP="127.0.0.1",
                  ROS_HOME=str(HOME), ROS_LOG_DIR=str(HOME / "log"), ROS_ROOT="/usr/share/ros",
                  ROSCONSOLE_STDOUT_LINE_BUFFERED="1",
                  ROSCONSOLE_FORMAT="[${severity}] ${logger} ${message}")
_prepend("CMAKE_PREFIX_PATH", *dict.fromkeys([DEVEL, MSGS]), "/usr")
_prepend("ROS_PACKAGE_PATH", SOURCE, str(pathlib.Path(SOURCE).parent / "vorund_msgs"),
         "/usr/share")
_PYTHON = [folder for prefix in dict.fromkeys([DEVEL, MSGS])
           for folder in glob.glob(prefix + "/lib/python3*/dist-packages")]
_prepend("PYTHONPATH", *_PYTHON)
sys.path[:0] = _PYTHON


class Process:
    """A program whose lines are kept."""

    def __init__(self, command, env=None):
        self.lines = []
        self._changed = threading.Condition()
        self._process = subprocess.Popen([str(part) for part in command], stdout=subprocess.PIPE,
                                         stderr=subprocess.STDOUT, text=True, errors="replace",
                                         env={**os.environ, **(env or {})})
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            with self._changed:
                self.lines.append(re.sub("\x1b\\[[0-9;]*m", "", line).rstrip())
                self._changed.notify_all()

    def with_text(self, text):
        with self._changed:
            return [line for line in self.lines if text in line]

    def wait_for(self, text, count=1):
        """Waits until so many lines hold the text."""
        end = time.monotonic() + PATIENCE
        while len(self.with_text(text)) < count:
            if time.monotonic() > end or (self._process.poll() is not None
                                          and not self._reader.is_alive()):
                raise AssertionError("no %r among:\n%s" % (text, "\n".join(self.lines[-40:])))
            with self._changed:
                self._changed.wait(0.1)

    def is_running(self):
        return self._process.poll() is None

    def wait(self):
        status = self._process.wait(PATIENCE)
        self._reader.join(PATIENCE)
        return status

    def stop(self, signal_number=signal.SIGINT):
        """Ends the program and returns its status."""
        if self.is_running():
            self._process.send_signal(signal_number)
        try:
            return self.wait()
        except subprocess.TimeoutExpired:
            self._process.kill()
            raise AssertionError("does not end:\n" + "\n".join(self.lines[-40:]))

    def kill_if_running(self):
        if self.is_running():
            self._process.kill()
            self._process.wait()


def executable(name):
    return pathlib.Path(DEVEL) / "lib/vorund_ros" / name


def _start_master():
    master = Process(["/usr/bin/rosmaster", "--core", "-p",
                      os.environ["ROS_MASTER_URI"].rsplit(":", 1)[1]])
    import rosgraph
    end = time.monotonic() + PATIENCE
    while not rosgraph.is_master_online():
        if time.monotonic() > end or not master.is_running():
            raise RuntimeError("no master: " + "\n".join(master.lines))
        time.sleep(0.05)
    return master


MASTER = _start_master()


def _end():
    MASTER.kill_if_running()
    shutil.rmtree(HOME, ignore_errors=True)


atexit.register(_end)

import numpy  # noqa: E402
import rospy  # noqa: E402
from diagnostic_msgs.msg import DiagnosticArray  # noqa: E402
from nav_msgs.msg import OccupancyGrid  # noqa: E402
from sensor_msgs.msg import Image  # noqa: E402
from visualization_msgs.msg import MarkerArray  # noqa: E402
from vorund_msgs.msg import RoomGraph  # noqa: E402

rospy.init_node("test", anonymous=True, disable_signals=True)

OUTPUTS = {"rooms": OccupancyGrid, "rooms/image": Image, "room_graph": RoomGraph,
           "room_markers": MarkerArray}


def map_of(cells, resolution=0.05, x=0.0, y=0.0, yaw=0.0):
    """A message from cells, the lowest row first."""
    grid = OccupancyGrid()
    grid.header.frame_id = "map"
    grid.header.stamp = rospy.Time(1234, 5678)
    grid.info.resolution = float(numpy.float32(resolution))  # As it comes over the wire.
    grid.info.height, grid.info.width = cells.shape
    grid.info.origin.position.x = x
    grid.info.origin.position.y = y
    grid.info.origin.orientation.z = math.sin(yaw / 2)
    grid.info.origin.orientation.w = math.cos(yaw / 2)
    grid.data = cells.astype(numpy.int8).flatten().tolist()
    return grid


def row_of_rooms(count, resolution=0.05, wall=100, floor=0, **origin):
    """Rooms of 3 m by 3 m in a row, from (0.5, 0.5) on, with walls of 0.2 m and doors of 0.8 m
    between them; the unknown around. Room i, from 0, has its middle at (2 + 3.2 i, 2)."""
    def cell(metres):
        return int(round(metres / resolution))

    width = 1.0 + 3.2 * count - 0.2
    cells = numpy.full((cell(4.0), cell(width)), -1)
    cells[cell(0.3):cell(3.7), cell(0.3):cell(width - 0.3)] = wall
    for i in range(count):
        left = 0.5 + 3.2 * i
        cells[cell(0.5):cell(3.5), cell(left):cell(left + 3.0)] = floor
        if i > 0:
            cells[cell(1.6):cell(2.4), cell(left - 0.2):cell(left)] = floor
    return map_of(cells, resolution, **origin)


def middle(i):
    return 2.0 + 3.2 * i, 2.0


def in_frame(grid, x, y):
    """A point of the map's own axes, from its lower left corner, in the map frame."""
    origin = grid.info.origin
    yaw = 2 * math.atan2(origin.orientation.z, origin.orientation.w)
    return (origin.position.x + math.cos(yaw) * x - math.sin(yaw) * y,
            origin.position.y + math.sin(yaw) * x + math.cos(yaw) * y)


def big_hall():
    """A map that takes its time: wide rooms, so many scales."""
    cells = numpy.full((320, 640), 100)
    for i in range(2):
        cells[10:310, 10 + 312 * i:318 + 312 * i] = 0
    cells[150:170, :] = 0
    return map_of(numpy.tile(cells, (4, 4)))


class Listener:
    """Messages of a topic that somebody publishes already, in their order."""

    def __init__(self, topic, kind):
        self._messages = queue.Queue()
        self._subscriber = rospy.Subscriber(topic, kind, self._messages.put)
        # What is not latched and goes out earlier would be missed; what is latched and goes out
        # while this connects may come twice.
        end = time.monotonic() + PATIENCE
        while self._subscriber.get_num_connections() == 0:
            if time.monotonic() > end:
                raise AssertionError("nobody publishes " + topic)
            time.sleep(0.01)

    def next(self):
        try:
            return self._messages.get(timeout=PATIENCE)
        except queue.Empty:
            raise AssertionError("nothing on " + self._subscriber.name)

    def next_that(self, holds):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            message = self.next()
            if holds(message):
                return message
        raise AssertionError("nothing that fits on " + self._subscriber.name)

    def is_empty(self):
        return self._messages.empty()

    def close(self):
        self._subscriber.unregister()


class Case(unittest.TestCase):
    """A test with a namespace of its own, so that tests never hear each other."""

    def setUp(self):
        self.space = "/" + self.id().split(".")[-1]
        self.publishers = {}
        self.save_path = HOME / (self.space[1:] + ".rooms")

    def start_node(self, *arguments, wait=True, env=None):
        """Starts the node; its name is SPACE/vorund."""
        node = Process([executable("vorund_node"), "__ns:=" + self.space,
                        "_save_path:=" + str(self.save_path), *arguments], env)
        self.addCleanup(node.kill_if_running)
        if wait:
            self.wait_until_up(node)
        return node

    def wait_until_up(self, node):
        end = time.monotonic() + PATIENCE
        while True:
            try:
                rospy.wait_for_service(self.space + "/vorund/load_rooms", timeout=0.2)
                return
            except rospy.ROSException:
                if time.monotonic() > end or not node.is_running():
                    raise AssertionError("\n".join(node.lines))

    def publish(self, grid, topic="map"):
        """Publishes a map, latched; the node has it or will have it."""
        if topic not in self.publishers:
            self.publishers[topic] = rospy.Publisher(self.space + "/" + topic, OccupancyGrid,
                                                     latch=True, queue_size=100)
        self.publishers[topic].publish(grid)

    def listen(self, topic="room_graph", kind=None):
        listener = Listener(topic if topic.startswith("/") else self.space + "/" + topic,
                            kind or OUTPUTS[topic])
        self.addCleanup(listener.close)
        return listener

    def call(self, name, kind, **request):
        return rospy.ServiceProxy(self.space + "/vorund/" + name, kind)(**request)

    def wait_for_diagnosis(self, holds):
        """The node's status, once it fulfils the condition."""
        listener = self.listen("/diagnostics", DiagnosticArray)
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            for status in listener.next().status:
                if status.name == self.space[1:] + "/vorund: rooms" and holds(status):
                    return status
        raise AssertionError("no such diagnosis")


def values_of(status):
    return {pair.key: pair.value for pair in status.values}


def label_at(image, row, col):
    at = row * image.step + 2 * col
    return image.data[at] + 256 * image.data[at + 1]


def labels_of(image):
    return numpy.frombuffer(image.data, "<u2").reshape(image.height, image.width)


def cells_of(grid):
    return numpy.array(grid.data, int).reshape(grid.info.height, grid.info.width)


def main():
    # rospy leaves its sockets to the collector, and warns of it.
    unittest.main(verbosity=2, warnings="ignore")
