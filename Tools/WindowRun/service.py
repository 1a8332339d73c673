"""The same program without a window, driven over its pipe."""

import json
import subprocess


class Service:
    def __init__(self, program, environment):
        self.process = subprocess.Popen(
            [program, "serve"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, encoding="utf-8", env=environment
        )
        self.last_id = 0

    def call(self, method, **arguments):
        self.last_id += 1
        request = {"jsonrpc": "2.0", "id": self.last_id, "method": method, "params": arguments}
        self.process.stdin.write(json.dumps(request) + "\n")
        self.process.stdin.flush()
        for line in self.process.stdout:
            answer = json.loads(line)
            if "error" in answer:
                raise RuntimeError(f"{method}: {answer['error']['message']}")
            if answer.get("id") == self.last_id:
                return answer["result"]
        raise RuntimeError(f"{method}: the program has gone")

    def clips(self):
        """The clips by the names of their camera files."""
        return {clip["video"]["filename"]: clip for clip in self.call("state")["syncGroups"]}

    def close(self):
        self.process.stdin.close()
        return self.process.wait()
