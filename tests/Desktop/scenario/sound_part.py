# SPDX-License-Identifier: GPL-3.0-or-later
import pathlib
import wave

from driver.sound_server import SoundServer
from driver.waiting import comes_true, stays_true

from .desk import BREAK_NOW

_CHIME = pathlib.Path(__file__).resolve().parents[3] / "assets/sounds/Glass.wav"


def chime(desk, report):
    """The sound of a break, as the loudspeaker gets it."""
    with wave.open(str(_CHIME)) as file:
        samples = file.readframes(file.getnframes())
    # The server may begin to record in the middle of the first samples.
    known = samples[len(samples) // 4:].rstrip(b"\0")
    server = SoundServer(desk.bed)
    for is_on in (False, True):
        desk.start({"OBOnboarded": True, "OBMenuBarMode": True, "OBSoundEnabled": is_on},
                   server.environment)
        comes_true(desk.tray.items, 5)
        desk.tray.click(BREAK_NOW)
        desk.wait_for_overlays()
        if is_on:
            report.promise("a break begins with its sound, sample for sample",
                           comes_true(lambda: known in server.recorded(), 5))
        else:
            report.promise("a break is quiet where the sound is off", stays_true(lambda: not any(server.recorded()), 1))
        desk.end_break()
        report.promise(f"silent in the terminal with the sound {'on' if is_on else 'off'}", not desk.said(), desk.said())
        desk.finish()
    report.promise("the sound is played once", server.recorded().count(known) == 1)
    server.stop()
