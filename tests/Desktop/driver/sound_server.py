# SPDX-License-Identifier: GPL-3.0-or-later
"""A bed's sound server with one virtual loudspeaker, whose output is recorded."""

import subprocess

from .packages import require
from .waiting import wait_until

_RATE = 32000


class SoundServer:
    """Runs and records from construction to `stop`. `environment` makes programs use it."""

    def __init__(self, bed):
        require("pulseaudio", "parec")
        self._bed = bed
        socket = bed.home / "sound"
        self.environment = {"PULSE_SERVER": f"unix:{socket}"}
        self._server = bed.run(
            ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--disallow-exit", "--exit-idle-time=-1",
             "--disable-shm=yes", "--log-target=null",
             f"--load=module-null-sink sink_name=speaker format=s16le rate={_RATE} channels=1",
             f"--load=module-native-protocol-unix socket={socket} auth-anonymous=1"], stderr=subprocess.DEVNULL)
        wait_until(socket.exists, "the sound server")
        self._record = bed.home / "recording"
        with open(self._record, "wb") as record:
            self._recorder = bed.run(
                ["parec", "--device=speaker.monitor", "--raw", "--format=s16le", f"--rate={_RATE}", "--channels=1",
                 "--latency-msec=50"], self.environment, stdout=record, stderr=subprocess.DEVNULL)
        wait_until(self.recorded, "silence")

    def stop(self):
        self._bed.stop(self._recorder)
        self._bed.stop(self._server)

    def recorded(self):
        """All samples so far: one channel, 16 bits, 32 kHz."""
        return self._record.read_bytes()
