"""Enumerations, with the numbers of the library."""

from enum import IntEnum


class WeldType(IntEnum):
    """Kind of joint."""

    BUTT_GAP = 0
    LAP = 1
    CORNER = 2
    NONE = 3
    PLATE = 4
    U_GROOVE = 5
    V_GROOVE = 6
    SINGLE_BEVEL = 7
    FLARE_V = 8
    FLARE_BEVEL = 9
    STRIPE_PRESENCE = 10


class SeamState(IntEnum):
    """What a frame means to a controller: stop, weld, go on along the last good seam."""

    LOST = 0
    FOUND = 1
    HELD = 2


class Feature(IntEnum):
    """Points of a joint."""

    ROOT = 0
    LEFT_ROOT = 1
    RIGHT_ROOT = 2
    LEFT_SHOULDER = 3
    RIGHT_SHOULDER = 4
    LEFT_EDGE = 5
    RIGHT_EDGE = 6
    UPPER_CORNER = 7
    LOWER_CORNER = 8
    CORNER = 9
    LEFT_END = 10
    RIGHT_END = 11


class Polarity(IntEnum):
    """How a seam without a stripe differs from the plates beside it."""

    DARK = 0
    BRIGHT = 1
    EDGE = 2
    AUTOMATIC = 3
