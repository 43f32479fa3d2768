"""The photograph of both comparisons: pixels that compress as photographs do."""
import numpy
from PIL import Image


def photograph(width, height, seed):
    """Smooth shapes under fine grain."""
    random = numpy.random.default_rng(seed)
    coarse = Image.fromarray(random.integers(0, 256, (height // 64, width // 64, 3), numpy.uint8))
    smooth = numpy.asarray(coarse.resize((width, height), Image.BICUBIC), numpy.int16)
    grain = random.normal(0, 4, (height, width, 1)).astype(numpy.int16)
    return Image.fromarray(numpy.clip(smooth + grain, 0, 255).astype(numpy.uint8))
