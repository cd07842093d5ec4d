# SPDX-License-Identifier: GPL-3.0-or-later
import pathlib
import wave

from driver.sound_server import SoundServer
from driver.waiting import comes_true, stays_true, wait_until

_CHIME = pathlib.Path(__file__).resolve().parents[3] / "assets/sounds/Glass.wav"
_QUIET_BYTES = 2 * 32000


def chime(desk, report):
    """The recorded sound of a break."""
    with wave.open(str(_CHIME)) as file:
        samples = file.readframes(file.getnframes())
    # The recording may begin in the middle of the first samples.
    known = samples[len(samples) // 4:].rstrip(b"\0")
    server = SoundServer(desk.bed)
    _start(desk, server, is_on=False)
    desk.begin_break()
    report.promise("a break is silent if the sound is off", stays_true(lambda: not any(server.recorded()), 1))
    desk.end_break()
    desk.finish()
    _start(desk, server, is_on=True)
    for number in (1, 2):
        desk.begin_break()
        report.promise("every break begins with its sound, sample for sample",
                       comes_true(lambda number=number: server.recorded().count(known) == number, 5))
        desk.end_break()
        # The program learns of the end of its sound only after some silence.
        heard = len(server.recorded())
        wait_until(lambda heard=heard: len(server.recorded()) > heard + _QUIET_BYTES, "quiet after the sound")
    report.promise("silent on standard error when it plays", not desk.said(), desk.said())
    desk.finish()
    server.stop()


def _start(desk, server, is_on):
    desk.start({"OBOnboarded": True, "OBMenuBarMode": True, "OBSoundEnabled": is_on}, server.environment)
    wait_until(desk.tray.items, "the icon in the tray")
