"""The times that vorund_benchmarks writes as JSON: the best of all runs of each benchmark."""

import json

from stages import megapixels

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


class Results:
    """CPU seconds per megapixel by (stage, who, settings, side), and why there is none."""

    def __init__(self):
        self._times = {}
        self._reasons = {}

    def add(self, text):
        """Takes the JSON of one run of the program."""
        for entry in json.loads(text)["benchmarks"]:
            if entry.get("run_type", "iteration") != "iteration":
                continue
            stage, who, settings, side = entry.get("run_name", entry["name"]).split("/")[:4]
            key = (stage, who, settings, int(side))
            if entry.get("error_occurred"):
                self._reasons[key] = entry["error_message"]
                continue
            seconds = entry["cpu_time"] * SECONDS[entry["time_unit"]] / megapixels(int(side))
            self._times[key] = min(seconds, self._times.get(key, seconds))

    def time(self, stage, who, settings, side):
        """None if it was not measured."""
        return self._times.get((stage, who, settings, side))

    def reason(self, stage, who, settings, side):
        """Why a size was left out; None if it was not."""
        return self._reasons.get((stage, who, settings, side))

    def sum(self, stages, who, settings, side):
        """None if one of the stages was not measured."""
        times = [self.time(stage, who, settings, side) for stage in stages]
        return None if None in times else sum(times)

    def ratio(self, stages, settings, side):
        """How much longer the plain version takes, over the stages that have one."""
        both = [stage for stage in stages
                if None not in (self.time(stage, "library", settings, side),
                                self.time(stage, "plain", settings, side))]
        if not both:
            return None
        return self.sum(both, "plain", settings, side) / self.sum(both, "library", settings, side)
