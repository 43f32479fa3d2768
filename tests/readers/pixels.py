"""Points of golden documents and the colours that they have to show.

tests/golden/pixels_document.cpp and open_documents.cpp draw them, and are changed together with
this. Coordinates are points of the page, y upwards.
"""

TOLERANCE = 12  # of each of red, green and blue, out of 255

GROUND = (240, 240, 240)
WHITE = (255, 255, 255)
BLACK = (0, 0, 0)
RED = (255, 0, 0)
LIME = (0, 255, 0)
GREEN = (0, 128, 0)
BLUE = (0, 0, 255)
YELLOW = (255, 255, 0)
CYAN = (0, 255, 255)

# The colours of full inks. MuPDF without colour management takes them as plain complements.
INKS = [(0, 173, 239), (236, 0, 140), (255, 242, 0), (35, 31, 32)]
PLAIN_INKS = [CYAN, (255, 0, 255), YELLOW, BLACK]


class Point:
    def __init__(self, what, page, x, y, color, instead=None):
        self.what, self.page, self.x, self.y, self.color = what, page, x, y, color
        self.instead = instead or {}  # other colours, by reader

    def expected(self, reader):
        return self.instead.get(reader, self.color)


def quadrants(what, left, bottom, colors, instead=None):
    """The middles of the four quadrants of a 50 by 50 image, from the top left to the bottom
    right; a colour of None is not looked at."""
    points = []
    for i, color in enumerate(colors):
        x = left + (12.5 if i % 2 == 0 else 37.5)
        y = bottom + (37.5 if i < 2 else 12.5)
        others = {reader: others[i] for reader, others in (instead or {}).items()}
        points.append(Point(f"{what}, quadrant {i + 1}", 1, x, y, color, others))
    return points


POINTS = [
    # A bar turned by 45 degrees counter-clockwise.
    Point("bar, upper right end", 1, 86, 346, RED),
    Point("bar, lower left end", 1, 54, 314, RED),
    Point("bar, upper left", 1, 54, 346, GROUND),
    Point("bar, lower right", 1, 86, 314, GROUND),
    # Images in place, turned, mirrored and upside down.
    *quadrants("image turned by 90 degrees", 120, 300, [LIME, YELLOW, RED, BLUE]),
    *quadrants("image", 190, 300, [RED, LIME, BLUE, YELLOW]),
    *quadrants("image of negative width", 250, 140, [LIME, RED, YELLOW, BLUE]),
    *quadrants("image of negative height", 320, 140, [BLUE, YELLOW, RED, LIME]),
    # Transparency.
    *quadrants("soft mask", 260, 300, [(0, 0, 128), RED, (0, 0, 128), (128, 0, 64)]),
    *quadrants("colour key", 320, 300, [BLACK, (128, 128, 128), (254, 254, 254), GREEN]),
    # Colour spaces and filters.
    *quadrants("CMYK", 30, 220, INKS, {"MuPDF": PLAIN_INKS}),
    *quadrants("CMYK JPEG", 100, 220, INKS, {"MuPDF": PLAIN_INKS}),
    *quadrants("ICC", 170, 220, [BLUE, LIME, RED, CYAN], {"MuPDF": [RED, LIME, BLUE, YELLOW]}),
    *quadrants("JPEG 2000", 240, 220, [RED, LIME, BLUE, YELLOW]),
    *quadrants("JPEG", 310, 220, [RED, LIME, BLUE, YELLOW]),
    *quadrants("grey JPEG", 30, 60, [BLACK, (96, 96, 96), (160, 160, 160), WHITE]),
    *quadrants("LZW", 100, 60, [(10, 20, 30), (250, 128, 0), (0, 128, 250), (128, 0, 128)]),
    *quadrants("one bit", 170, 60, [WHITE, BLACK, BLACK, WHITE]),
    # Circles and rectangles.
    Point("circle, middle", 1, 60, 170, YELLOW),
    Point("circle, left edge", 1, 35, 170, BLUE),
    Point("circle, top edge", 1, 60, 195, BLUE),
    Point("circle, corner of its box", 1, 33, 197, GROUND),
    Point("stroked rectangle, middle", 1, 135, 170, GROUND),
    Point("stroked rectangle, inner half of the line", 1, 112.5, 170, RED),
    Point("stroked rectangle, outer half of the line", 1, 107.5, 170, RED),
    Point("turned rectangle, middle", 1, 205, 170, GREEN),
    Point("rectangle turned by 30 degrees, upper corner", 1, 214, 203, BLACK),
    Point("rectangle turned by 30 degrees, not by -30", 1, 196, 203, GROUND),
    Point("second circle, middle", 1, 265, 85, RED),
    Point("second circle, left edge", 1, 244, 85, GREEN),
    Point("rectangle in the colour of the circle before it", 1, 335, 65, GREEN),
    Point("rectangle in the colour of the circle before it, middle", 1, 335, 85, GROUND),
    # The crop box of the first page, the bounding box of the second's form, the shared form.
    Point("corner of the crop box", 1, 21, 379, GROUND),
    Point("inside the bounding box", 2, 50, 50, BLUE),
    Point("left of the bounding box", 2, 15, 50, WHITE),
    Point("right of the bounding box", 2, 85, 50, WHITE),
    Point("below the bounding box", 2, 50, 25, WHITE),
    Point("above the bounding box", 2, 50, 85, WHITE),
    Point("shared form, circle's middle", 3, 60, 170, YELLOW),
    Point("shared form, circle's left edge", 3, 35, 170, BLUE),
]

# Objects that a host wrote itself.
OPEN_POINTS = [
    *quadrants("predictor 15", 20, 120, [RED, LIME, BLUE, YELLOW]),
    # MuPDF 1.21 knows no colour key of a palette.
    *quadrants("palette and colour key", 110, 120, [RED, LIME, BLUE, GROUND],
               {"MuPDF": [RED, LIME, BLUE, YELLOW]}),
    *quadrants("CCITT G4", 200, 120, [WHITE, BLACK, WHITE, BLACK]),
    *quadrants("stencil mask", 290, 120, [GROUND, RED, GROUND, RED]),
    Point("operators, middle", 1, 45, 65, GREEN),
    Point("operators, beside", 1, 75, 65, GROUND),
    Point("encoded content", 2, 100, 100, BLUE),
    Point("content that is not encoded", 3, 100, 100, RED),
]


class Drawing:
    """What a document shows: its points, and the lower left corner and height of each crop box."""

    def __init__(self, points, crops):
        self.points, self.crops = points, crops

    def place(self, point):
        """The pixel of the point in a rendering of the crop box, a pixel a point."""
        left, bottom, height = self.crops[point.page]
        return int(point.x - left), int(height - (point.y - bottom))


DRAWINGS = {
    "pixels": Drawing(POINTS, {1: (20, 20, 360), 2: (0, 0, 100), 3: (30, 140, 60)}),
    "open_objects": Drawing(OPEN_POINTS, {page: (0, 0, 200) for page in (1, 2, 3)}),
}


def off(color, expected):
    return max(abs(a - b) for a, b in zip(color, expected))
