# SPDX-License-Identifier: GPL-3.0-or-later
"""What every virtual desktop offers to a scenario."""

import abc
import dataclasses


class NotPossibleHere(Exception):
    """This desktop has no way to do what was asked; the text says why."""


class CannotStart(Exception):
    """The desktop cannot run on this machine; the text says why. By design: the machine is as it should be, and lacks
    for example the rights; otherwise something is missing that should be there."""

    def __init__(self, text, is_by_design=False):
        super().__init__(text)
        self.is_by_design = is_by_design


@dataclasses.dataclass(frozen=True)
class Output:
    """A monitor, in pixels of the picture."""
    name: str
    x: int
    y: int
    width: int
    height: int
    #: How many pixels of the picture stand for one unit of length of the programs.
    scale: float = 1.0

    @property
    def box(self):
        """Left, top, right, bottom, as a PIL picture is cropped."""
        return (self.x, self.y, self.x + self.width, self.y + self.height)

    @property
    def centre(self):
        return (self.x + self.width / 2, self.y + self.height / 2)


class Bed(abc.ABC):
    """A desktop with monitors, a pointer, a keyboard, a session bus and a home folder of its own. Use it in a with
    statement: everything that it started has ended when the statement is left."""

    name = ""

    def __enter__(self):
        try:
            self.start()
        except BaseException:
            self.end()
            raise
        return self

    def __exit__(self, *_):
        self.end()

    @abc.abstractmethod
    def start(self):
        """Brings the desktop up; returns when it is ready for use. Raises CannotStart where it cannot run."""

    @abc.abstractmethod
    def end(self):
        """Ends every process of the desktop and removes its folders; also after a start that failed half-way."""

    @abc.abstractmethod
    def environment(self):
        """The environment in which programs of this desktop run."""

    @abc.abstractmethod
    def run(self, arguments, environment=None, **options):
        """Starts a program on the desktop, with changes to its environment (None removes a variable)."""

    @abc.abstractmethod
    def stop(self, process):
        """Ends a program that `run` started."""

    @abc.abstractmethod
    def outputs(self):
        """The monitors, from left to right."""

    @abc.abstractmethod
    def picture(self):
        """What all monitors show, as one PIL picture."""

    @abc.abstractmethod
    def type(self, text):
        """Types lower-case letters, digits and spaces, wherever the keyboard is."""

    @abc.abstractmethod
    def press(self, key):
        """Presses and releases one key, by its X name: Escape, Return, space."""

    @abc.abstractmethod
    def move_pointer(self, x, y):
        """Moves the pointer to a place on the picture."""

    @abc.abstractmethod
    def click(self, x, y, button=1):
        """Moves the pointer there and clicks."""

    @abc.abstractmethod
    def write(self, path, text):
        """Writes a file below the home folder, for the person of this desktop; returns where it is."""

    def lend(self, path):
        """Where the programs of this desktop find a file of ours."""
        return path

    def set_scale(self, name, scale):
        """Gives a monitor another scale."""
        raise NotPossibleHere(f"{self.name} has no scales")

    def plug(self, name):
        """Switches a monitor on."""
        raise NotPossibleHere(f"{self.name} cannot plug monitors in")

    def unplug(self, name):
        """Switches a monitor off."""
        raise NotPossibleHere(f"{self.name} cannot unplug monitors")

    def turn(self, name):
        """Turns a monitor by a quarter and puts it left of the others, where places are negative."""
        raise NotPossibleHere(f"{self.name} cannot turn monitors here")

    def turn_back(self, name):
        """Undoes that."""
        raise NotPossibleHere(f"{self.name} cannot turn monitors here")

    def lock(self):
        """Locks the screen."""
        raise NotPossibleHere(f"{self.name} has no screen locker")

    def switch_workspace(self, index):
        """Goes to a workspace, counted from 0."""
        raise NotPossibleHere(f"{self.name} has no workspaces")
