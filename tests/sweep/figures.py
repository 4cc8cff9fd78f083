"""Arithmetic in single precision, as the board does it."""
import math
import struct


def single(value):
    try:
        return struct.unpack("f", struct.pack("f", value))[0]
    except OverflowError:
        return math.copysign(math.inf, value)


def divide(above, below):
    if below == 0:
        return math.nan if above == 0 else math.copysign(math.inf, above)
    return single(above / below)
