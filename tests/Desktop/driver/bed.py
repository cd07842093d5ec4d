# SPDX-License-Identifier: GPL-3.0-or-later
"""The interface of a bed, a virtual desktop for a scenario."""

import abc
import dataclasses


class NotPossibleHere(Exception):
    """This desktop does not support the operation; the text says why."""


class CannotStart(Exception):
    """The desktop cannot run on this machine; the text says why. `is_by_design` means that the machine is set up correctly but
    does not allow it, for example without root; otherwise something is missing."""

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
    #: Pixels of the picture per logical pixel.
    scale: float = 1.0

    @property
    def box(self):
        """Left, top, right, bottom, as for PIL's crop()."""
        return (self.x, self.y, self.x + self.width, self.y + self.height)

    @property
    def centre(self):
        return (self.x + self.width / 2, self.y + self.height / 2)


class Bed(abc.ABC):
    """A desktop with its own monitors, pointer, keyboard, session bus and home directory. Use it in a with statement, which
    ends everything that the desktop started."""

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
        """Starts the desktop and returns when it is ready for use. Raises CannotStart if it cannot run."""

    @abc.abstractmethod
    def end(self):
        """Ends every process of the desktop and removes its folders, also after a start that failed."""

    @abc.abstractmethod
    def version(self):
        """The desktop's name and version."""

    @abc.abstractmethod
    def environment(self):
        """The environment of the programs on this desktop."""

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
        """A screenshot of all monitors as one PIL picture."""

    @abc.abstractmethod
    def type(self, text):
        """Types lower-case letters, digits and spaces into the focused window."""

    @abc.abstractmethod
    def press(self, key):
        """Presses and releases one key, by its X name: Escape, Return, space."""

    @abc.abstractmethod
    def hold(self, key):
        """Presses one key, by its X name; returns a function that releases it."""

    @abc.abstractmethod
    def move_pointer(self, x, y):
        """Moves the pointer to a position in the picture."""

    @abc.abstractmethod
    def click(self, x, y, button=1):
        """Moves the pointer there and clicks."""

    @abc.abstractmethod
    def write(self, path, text):
        """Writes a file below the home directory, owned by the desktop's user; returns its path."""

    def lend(self, path):
        """Makes a file readable for the programs of this desktop; returns its path for them."""
        return path

    def set_scale(self, name, scale):
        """Changes the scale of a monitor."""
        raise NotPossibleHere(f"{self.name} has no scales")

    def mirror(self, name):
        """Has a monitor show what the first one shows."""
        raise NotPossibleHere(f"{self.name} cannot mirror monitors here")

    def plug(self, name):
        """Switches a monitor on."""
        raise NotPossibleHere(f"{self.name} cannot plug monitors in")

    def unplug(self, name):
        """Switches a monitor off."""
        raise NotPossibleHere(f"{self.name} cannot unplug monitors")

    def turn(self, name):
        """Rotates a monitor by 90 degrees and moves it left of the others, to negative positions."""
        raise NotPossibleHere(f"{self.name} cannot turn monitors here")

    def turn_back(self, name):
        """Undoes `turn`."""
        raise NotPossibleHere(f"{self.name} cannot turn monitors here")

    def require_lock_protocol(self):
        """Raises NotPossibleHere if any program may not lock the screen."""
        raise NotPossibleHere(f"{self.name} has only its own screen locker")

    def open_own(self, name):
        """Opens what the desktop itself shows over everything: its "overview" or its "menu"."""
        raise NotPossibleHere(f"{self.name} has no {name}")

    def close_own(self, name):
        """Closes it."""
        raise NotPossibleHere(f"{self.name} has no {name}")

    def switch_workspace(self, index):
        """Switches to a workspace, counted from 0."""
        raise NotPossibleHere(f"{self.name} has no workspaces")
