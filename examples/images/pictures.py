"""Draws the album's pictures from nothing but formulas and seeded noise.

Every function returns an array of floats from 0 to 1: height x width x 3 (colours), or
height x width (planes of one component). The same seed always draws the same picture.
"""

import math

import numpy as np
from PIL import Image, ImageDraw, ImageFilter

SCALE = 2  # outlines are drawn this much larger and scaled down: that smooths their edges


# ---- Building blocks --------------------------------------------------------------------------


def colour(text):
    """'#rrggbb' as an array of three floats."""
    return np.array([int(text[i : i + 2], 16) for i in (1, 3, 5)]) / 255.0


def mix(a, b, amount):
    """a where amount is 0, b where it is 1. A plane as amount counts for all three components."""
    amount = np.asarray(amount, dtype=float)
    if amount.ndim == 2:
        amount = amount[..., None]
    return a * (1.0 - amount) + b * amount


def gradient(positions, stops):
    """Colours of the stops [(position, '#rrggbb'), ...], interpolated at an array of positions."""
    places = [place for place, _ in stops]
    colours = np.array([colour(text) for _, text in stops])
    channels = [np.interp(positions, places, colours[:, c]) for c in range(3)]
    return np.stack(channels, axis=-1)


def smoothstep(low, high, values):
    t = np.clip((values - low) / (high - low), 0.0, 1.0)
    return t * t * (3.0 - 2.0 * t)


def grid(height, width):
    """Row and column of every pixel, both from 0 to 1."""
    return np.meshgrid(np.linspace(0, 1, height), np.linspace(0, 1, width), indexing="ij")


def noise(height, width, roughness, seed, stretch=1.0):
    """Fractal noise from 0 to 1, made of waves whose strength falls with their frequency.

    Its shapes are stretch times as wide as they are high.
    """
    rng = np.random.default_rng(seed)
    spectrum = np.fft.rfft2(rng.standard_normal((height, width)))
    fy = np.fft.fftfreq(height)[:, None] * height
    fx = np.fft.rfftfreq(width)[None, :] * width * stretch
    frequency = np.hypot(fy, fx)
    frequency[0, 0] = 1.0
    field = np.fft.irfft2(spectrum / frequency**roughness, s=(height, width))
    low, high = np.percentile(field, [1, 99])
    return np.clip((field - low) / (high - low), 0.0, 1.0)


def ridge(width, roughness, seed):
    """A mountain line: fractal noise along one axis, from 0 to 1."""
    rng = np.random.default_rng(seed)
    spectrum = np.fft.rfft(rng.standard_normal(2 * width))
    frequency = np.arange(spectrum.size, dtype=float)
    frequency[0] = 1.0
    spectrum = spectrum / frequency**roughness
    spectrum[0] = 0.0
    line = np.fft.irfft(spectrum)[:width]
    return (line - line.min()) / (line.max() - line.min())


def below(line, height, width):
    """1 in every pixel that lies under the line (a height from the top per column), else 0."""
    rows = np.arange(height)[:, None]
    return np.clip(rows - line[None, :] + 0.5, 0.0, 1.0)


def mask_of(height, width, draw):
    """The plane that draw(ImageDraw, SCALE) paints in white on black, with smooth edges."""
    image = Image.new("L", (width * SCALE, height * SCALE), 0)
    draw(ImageDraw.Draw(image), SCALE)
    return plane_from(image.resize((width, height), Image.LANCZOS))


def plane_from(image):
    return np.asarray(image, dtype=float) / 255.0


def image_from(pixels):
    return Image.fromarray((np.clip(pixels, 0.0, 1.0) * 255.0 + 0.5).astype(np.uint8))


def blurred(pixels, radius):
    return plane_from(image_from(pixels).filter(ImageFilter.GaussianBlur(radius)))


def sampled(texture, rows, columns):
    """The texture at fractional places, repeated endlessly."""
    height, width = texture.shape
    y0, x0 = np.floor(rows).astype(int), np.floor(columns).astype(int)
    fy, fx = rows - y0, columns - x0
    at = lambda dy, dx: texture[(y0 + dy) % height, (x0 + dx) % width]
    top = at(0, 0) * (1 - fx) + at(0, 1) * fx
    bottom = at(1, 0) * (1 - fx) + at(1, 1) * fx
    return top * (1 - fy) + bottom * fy


def pine(draw, x, base, height, rng, scale):
    """One pine tree: a trunk and ragged tiers that widen downwards."""
    tiers = max(6, int(height / 7))
    left, right = [], []
    for i in range(tiers + 1):
        t = i / tiers
        half = height * 0.21 * t**0.85 * (0.75 + 0.5 * rng.random())
        y = base - height * (1.0 - 0.93 * t)
        left += [(x - half * 0.35, y), (x - half, y + height * 0.035)]
        right += [(x + half * 0.35, y), (x + half * (0.8 + 0.4 * rng.random()), y + height * 0.035)]
    outline = [(x, base - height)] + right + left[::-1]
    draw.polygon([(px * scale, py * scale) for px, py in outline], fill=255)
    trunk = height * 0.018 + 0.4
    draw.rectangle(
        [(x - trunk) * scale, (base - height * 0.5) * scale, (x + trunk) * scale, base * scale],
        fill=255,
    )


# ---- Pictures ---------------------------------------------------------------------------------


def dusk(height, width):
    """Mountain ranges fading into an evening sky."""
    y, x = grid(height, width)
    aspect = width / height
    sky = gradient(
        y,
        [(0.0, "#1b1f4b"), (0.22, "#40357a"), (0.40, "#8d4a8f"), (0.53, "#e0728a"),
         (0.62, "#fba86f"), (0.70, "#ffd98f"), (1.0, "#ffe9b8")],
    )
    sun_x, sun_y = 0.64, 0.60
    distance = np.hypot((x - sun_x) * aspect, y - sun_y)
    clouds = noise(height, width, 1.7, 11, stretch=4.5)
    veil = smoothstep(0.52, 0.95, clouds) * smoothstep(0.02, 0.30, y) * smoothstep(0.66, 0.45, y)
    lit = gradient(y, [(0.0, "#6a4a90"), (0.35, "#d8748f"), (0.6, "#ffc28a")])
    picture = mix(sky, lit, veil * 0.75)
    picture = picture + colour("#ffb060") * (0.55 * np.exp(-distance * 5.5))[..., None]
    picture = mix(picture, colour("#fff6d8"), smoothstep(0.062, 0.055, distance))
    stars = stars_plane(height, width, 260, 5) * smoothstep(0.30, 0.0, y)
    picture = picture + stars[..., None] * 0.8

    ranges = 7
    for i in range(ranges):
        t = i / (ranges - 1)
        peaks = ridge(width, 1.25 + 0.12 * t, 40 + i)
        line = (0.60 + 0.30 * t - (0.17 - 0.06 * t) * peaks) * height
        tint = gradient(np.array(t), [(0.0, "#d98c90"), (0.35, "#8d5a86"), (0.7, "#3f3566"),
                                      (1.0, "#15132f")])
        mask = below(line, height, width)
        depth = np.clip((np.arange(height)[:, None] - line[None, :]) / (0.22 * height), 0, 1)
        haze = mix(np.broadcast_to(tint, picture.shape), colour("#f3a88f"), depth * 0.42 * (1 - t))
        glow = np.exp(-((x - sun_x) * aspect) ** 2 * 6.0) * (1 - t) * 0.35
        haze = mix(haze, colour("#ffcf92"), glow)
        picture = mix(picture, haze, mask)

    rng = np.random.default_rng(3)
    ground = (0.965 - 0.05 * ridge(width, 1.6, 77)) * height

    def trees(draw, scale):
        for _ in range(150):
            px = rng.random() * width
            edge = abs(px / width - 0.58)
            size = (0.05 + 0.26 * edge**1.3 + 0.05 * rng.random()) * height
            pine(draw, px, ground[min(int(px), width - 1)] + 0.02 * height, size, rng, scale)

    picture = mix(picture, colour("#0b0a1c"), below(ground, height, width))
    return mix(picture, colour("#0b0a1c"), mask_of(height, width, trees))


def stars_plane(height, width, count, seed):
    rng = np.random.default_rng(seed)
    plane = np.zeros((height, width))
    rows, columns = rng.integers(0, height - 1, count), rng.integers(0, width - 1, count)
    light = rng.random(count) ** 3 * 0.9 + 0.1
    for dy, dx, part in ((0, 0, 1.0), (0, 1, 0.45), (1, 0, 0.45), (1, 1, 0.2)):
        plane[rows + dy, columns + dx] += light * part
    return np.clip(plane, 0, 1)


def coast(height, width):
    """A sandy shore under summer clouds."""
    y, x = grid(height, width)
    horizon = 0.42
    sky = gradient(y / horizon, [(0.0, "#2f78c4"), (0.6, "#86bde6"), (1.0, "#dcecf2")])
    # Clouds are sampled in perspective, so that they flatten towards the horizon.
    clouds = noise(1024, 1024, 1.75, 21)
    depth = 1.0 / np.clip(horizon - y + 0.06, 0.06, 1.0)
    puffs = sampled(clouds, depth * 60 + 900, (x - 0.5) * depth * 75 + 160)
    cover = smoothstep(0.42, 0.62, puffs) * smoothstep(0.0, 0.10, horizon - y)
    shade = mix(np.broadcast_to(colour("#ffffff"), sky.shape), colour("#a9bccd"),
                smoothstep(0.55, 0.95, puffs) * 0.8)
    picture = mix(sky, shade, cover * 0.95)

    # The sea: rows are farther apart the nearer they are.
    near = np.clip(y - horizon, 1e-4, 1.0)
    ripples = noise(1024, 1024, 1.15, 22, stretch=3.0)
    z = 1.0 / (near + 0.025)
    waves = sampled(ripples, z * 90, (x - 0.5) * z * 60 + 100)
    water = gradient(near / (1 - horizon), [(0.0, "#2a6f9e"), (0.25, "#1f86a8"), (0.55, "#3fb3b8"),
                                            (0.85, "#a6dccb")])
    water = water + ((waves - 0.5) * (0.10 + 0.16 * smoothstep(0.0, 0.1, near)))[..., None]
    picture = np.where((y > horizon)[..., None], water, picture)
    picture = mix(picture, colour("#cfe3ea"), np.exp(-((y - horizon) / 0.006) ** 2) * 0.7)

    headland = (horizon - np.clip(0.13 * ridge(width, 1.35, 8) - 0.10 * (x[0] - 0.02), 0, 1) * 0.9)
    land = below(headland * height, height, width) * (y < horizon + 0.002)
    rock = gradient(smoothstep(horizon - 0.12, horizon, y), [(0.0, "#7f9a86"), (1.0, "#5d7a78")])
    picture = mix(picture, rock, land * 0.9)

    # Two foam lines and the wet sand behind them follow the same slow curve.
    wander = 0.035 * np.sin(x * 5.2 + 0.6) + 0.018 * np.sin(x * 13.0 + 2.0)
    shore = 0.80 + wander - 0.05 * x
    grain = noise(height, width, 0.35, 23)
    sand = gradient(np.clip((y - shore) / 0.22, 0, 1), [(0.0, "#b89b76"), (0.25, "#dcc398"),
                                                        (1.0, "#f2dfb6")])
    dunes = sampled(ripples, y * 700, x * 420)
    sand = sand + ((grain - 0.5) * 0.07 + (dunes - 0.5) * 0.09)[..., None]
    picture = mix(picture, sand, smoothstep(-0.004, 0.004, y - shore))
    lace = sampled(noise(1024, 1024, 1.0, 24), y * 1500, x * 1100)
    for offset, strength in ((0.0, 1.0), (-0.055, 0.75), (-0.115, 0.5)):
        gap = y - shore - offset + (lace - 0.5) * 0.02
        crest = smoothstep(0.009, 0.0, np.abs(gap))
        wash = smoothstep(-0.05, 0.0, gap) * (gap < 0) * smoothstep(0.50, 0.75, lace) * 0.7
        picture = mix(picture, colour("#fbfdfb"), np.clip(crest + wash, 0, 1) * strength)
    return picture


def forest(height, width):
    """Pines in fog: a picture without colour, one plane."""
    y, x = grid(height, width)
    mist = noise(height, width, 2.0, 31, stretch=3.0)
    plane = 0.93 - 0.20 * y + 0.06 * (mist - 0.5)
    rng = np.random.default_rng(32)
    layers = 7
    for i in range(layers):
        t = i / (layers - 1)
        line = (0.38 + 0.58 * t - 0.12 * ridge(width, 1.5, 300 + i)) * height
        size = (0.10 + 0.34 * t**1.25) * height

        def stand(draw, scale):
            count = int(150 - 118 * t)
            for px in np.sort(rng.random(count)) * width:
                tall = size * (0.65 + 0.6 * rng.random())
                pine(draw, px, line[min(int(px), width - 1)] + 0.03 * height, tall, rng, scale)

        wood = np.maximum(mask_of(height, width, stand), below(line, height, width))
        tone = 0.84 - 0.74 * t**0.85
        fog = np.clip((y - (line[None, :] - size) / height) / (size / height + 0.10), 0, 1) ** 1.3
        shade = tone + (0.88 - tone) * fog * (0.92 - 0.42 * t) * (0.75 + 0.5 * mist)
        plane = plane * (1 - wood) + shade * wood
    return np.clip(plane, 0, 1)


def tulips(height, width):
    """Rows of flowers running to the horizon, and a windmill."""
    y, x = grid(height, width)
    aspect = width / height
    horizon = 0.40
    sky = gradient(y / horizon, [(0.0, "#3d8fd1"), (0.7, "#a9d6ee"), (1.0, "#f6ead0")])
    clouds = noise(1024, 1024, 1.8, 51)
    depth = 1.0 / np.clip(horizon - y + 0.07, 0.07, 1.0)
    puffs = sampled(clouds, depth * 60 + 300, (x - 0.5) * depth * 70 + 700)
    picture = mix(sky, colour("#ffffff"), smoothstep(0.40, 0.75, puffs) * 0.9)

    hills = (horizon - 0.035 * ridge(width, 1.7, 52)) * height
    picture = mix(picture, colour("#6f9a86"), below(hills, height, width))

    z = 1.0 / np.clip(y - horizon + 0.012, 0.012, 1.0)
    across = (x - 0.47) * aspect * z
    bed = np.floor(across / 1.15)
    place = across / 1.15 - bed
    palette = np.array([colour(c) for c in ("#d81e2c", "#ffd21f", "#e8409a", "#ff7a1a", "#f7f2ea",
                                            "#7c2a8c")])
    flowers = palette[(bed.astype(int) * 5 + 2) % len(palette)]
    petals = noise(1024, 1024, 0.85, 53)
    heads = sampled(petals, z * 210, across * 150)
    clump = sampled(clouds, z * 40, across * 60)
    leaf = mix(np.broadcast_to(colour("#2c6b2e"), flowers.shape), colour("#63a343"), clump)
    bloom = smoothstep(0.16, 0.42, heads + 0.25 * (clump - 0.5))
    far = smoothstep(4.0, 14.0, z)
    field = mix(leaf, flowers, np.maximum(bloom, far * 0.85))
    field = field * (0.72 + 0.42 * heads)[..., None]
    furrow = smoothstep(0.10, 0.02, np.minimum(place, 1 - place)) * (1 - 0.5 * far)
    field = mix(field, colour("#3d3524"), furrow * 0.85)
    field = mix(field, colour("#e9dfc4"), smoothstep(8.0, 70.0, z) * 0.55)
    picture = np.where((y > horizon)[..., None], field, picture)

    def mill(draw, scale):
        s = height * scale
        cx, cy, foot = 0.70 * width * scale, (horizon - 0.155) * s, (horizon + 0.006) * s
        draw.polygon([(cx - 0.030 * s, foot), (cx + 0.030 * s, foot),
                      (cx + 0.017 * s, cy), (cx - 0.017 * s, cy)], fill=255)
        draw.polygon([(cx - 0.020 * s, cy), (cx + 0.020 * s, cy), (cx, cy - 0.035 * s)], fill=255)

    def sails(draw, scale):
        s = height * scale
        cx, cy = 0.70 * width * scale, (horizon - 0.160) * s
        for k in range(4):
            a = math.radians(22 + 90 * k)
            ux, uy = math.cos(a) * s, math.sin(a) * s
            tip, side = 0.135, 0.020
            draw.line([(cx, cy), (cx + ux * tip, cy + uy * tip)], fill=255, width=int(0.006 * s))
            corner = lambda r, w: (cx + ux * r - uy * w, cy + uy * r + ux * w)
            draw.polygon([corner(0.03, 0), corner(tip, 0), corner(tip, side), corner(0.03, side)],
                         fill=170)

    picture = mix(picture, colour("#5b4034"), mask_of(height, width, mill))
    return mix(picture, colour("#6b3a2a"), mask_of(height, width, sails))


def aurora(height, width):
    """Northern lights over a frozen lake."""
    y, x = grid(height, width)
    picture = gradient(
        y, [(0.0, "#040714"), (0.45, "#0b1c3a"), (0.72, "#16415c"), (1.0, "#1c5568")]
    )
    stars = stars_plane(height, width, 900, 61) * 0.9 * smoothstep(0.7, 0.2, y)
    picture = picture + stars[..., None]
    for i, (base, reach, strength) in enumerate(((0.55, 0.30, 0.9), (0.46, 0.24, 0.75),
                                                 (0.36, 0.20, 0.5))):
        wave = (0.06 * np.sin(x[0] * (5.0 + i) + 1.3 * i + 0.4)
                + 0.10 * (ridge(width, 1.9, 62 + i) - 0.5)
                - 0.10 * (x[0] - 0.5) * (1 if i % 2 else -1))
        streaks = 0.35 + 0.65 * ridge(width, 0.75, 70 + i) ** 1.5
        swell = smoothstep(0.15, 0.8, ridge(width, 2.0, 80 + i))
        up = (base + wave)[None, :] - y
        light = np.where(up > 0, np.exp(-up / (reach * (0.45 + 0.55 * streaks[None, :]))),
                         np.exp(up / 0.018))
        light = light * (streaks * swell)[None, :] * strength
        tint = gradient(
            np.clip(up / reach, 0, 1),
            [(0.0, "#b8ffd0"), (0.12, "#4dffa0"), (0.45, "#1fd6a0"), (0.75, "#5a62d8"),
             (1.0, "#a040c8")],
        )
        picture = picture + tint * light[..., None]
    shore = 0.74
    for i, (level, tall, tint) in enumerate(((0.735, 0.23, "#23405c"), (0.745, 0.12, "#10222f"))):
        line = (level - tall * ridge(width, 1.3, 90 + i)) * height
        rock = np.broadcast_to(colour(tint), picture.shape)
        if i == 0:
            snow = noise(height, width, 1.2, 95)
            lit = smoothstep(0.42, 0.62, snow) * smoothstep(0.72, 0.55, y)
            rock = mix(rock, colour("#9fd6d6"), lit * 0.75)
        picture = mix(picture, rock, below(line, height, width) * (y < shore))

    row = int(shore * height)
    mirror = picture[row - 1 :: -1][: height - row]
    shake = noise(height - row, width, 1.0, 96, stretch=12.0)
    moved = (np.arange(width)[None, :] + (shake - 0.5) * 26).astype(int) % width
    mirror = np.take_along_axis(mirror, moved[..., None], axis=1)
    lake = picture.copy()
    lake[row:] = mirror * 0.48 + colour("#0a2a3c") * 0.30
    lake[row:] = lake[row:] + ((shake - 0.5) * 0.05)[..., None]
    rim = np.exp(-((y - shore) / 0.004) ** 2) * 0.5
    return mix(lake, colour("#0c2230"), rim)


def maple(height, width):
    """An autumn tree on a meadow."""
    y, x = grid(height, width)
    picture = gradient(y, [(0.0, "#8fc3ea"), (0.55, "#d9ecf4"), (0.75, "#f4f0dd")])
    clouds = noise(height, width, 1.9, 101, stretch=2.5)
    picture = mix(picture, colour("#ffffff"), smoothstep(0.5, 0.85, clouds) * 0.8)
    for i, (level, tint) in enumerate(((0.74, "#9fb98c"), (0.79, "#7fa85a"))):
        line = (level - 0.06 * ridge(width, 1.8, 102 + i)) * height
        picture = mix(picture, colour(tint), below(line, height, width))
    meadow = gradient(smoothstep(0.82, 1.0, y), [(0.0, "#7fb04a"), (1.0, "#3f7a30")])
    blades = noise(height, width, 0.6, 104, stretch=0.6)
    meadow = meadow * (0.78 + 0.4 * blades)[..., None]
    rise = (0.83 - 0.02 * ridge(width, 2.0, 105)) * height
    picture = mix(picture, meadow, below(rise, height, width))

    rng = np.random.default_rng(108)
    segments, tips = [], []

    def branch(px, py, angle, length, thick):
        qx, qy = px + length * math.sin(angle), py - length * math.cos(angle)
        segments.append((px, py, qx, qy, thick))
        if thick < 0.0022:
            tips.append((qx, qy))
            return
        for side in (-1, 1):
            branch(qx, qy, angle + side * (0.26 + 0.30 * rng.random()),
                   length * (0.70 + 0.12 * rng.random()), thick * 0.68)
        if thick > 0.012:
            branch(qx, qy, angle + 0.2 * (rng.random() - 0.5), length * 0.8, thick * 0.6)

    branch(0.5, 0.90, 0.02, 0.175, 0.040)

    def wood(draw, scale):
        w, h = width * scale, height * scale
        for px, py, qx, qy, thick in segments:
            draw.line([(px * w, py * h), (qx * w, qy * h)], fill=255, width=max(1, int(thick * w)))

    shadow = np.exp(-(((x - 0.54) / 0.34) ** 2 + ((y - 0.905) / 0.03) ** 2))
    picture = mix(picture, colour("#284a20"), shadow * 0.6)
    picture = mix(picture, colour("#4a3226"), mask_of(height, width, wood))

    palette = ("#8e1b12", "#b8240f", "#d9480f", "#f07c12", "#f7a41d", "#ffd04a")
    canvas = image_from(picture).resize((width * SCALE, height * SCALE), Image.BICUBIC)
    draw = ImageDraw.Draw(canvas)
    w, h = width * SCALE, height * SCALE
    spots = [tips[i] for i in rng.integers(0, len(tips), 11000)]
    dabs = [(px + 0.028 * rng.standard_normal(), py + 0.022 * rng.standard_normal())
            for px, py in spots]
    for order in range(3):  # dark leaves first, sunlit ones last
        for px, py in dabs[order::3]:
            light = np.clip(0.12 + 0.14 * order + 1.1 * (0.38 - py) + 0.7 * (0.5 - px)
                            + 0.40 * rng.random(), 0, 0.999)
            r = (0.0045 + 0.0045 * rng.random()) * w
            draw.ellipse([px * w - r, py * h - r * 0.75, px * w + r, py * h + r * 0.75],
                         fill=palette[int(light * len(palette))])
    for _ in range(420):  # fallen leaves
        px, py = 0.5 + 0.20 * rng.standard_normal(), 0.88 + 0.10 * rng.random()
        r = 0.004 * w
        draw.ellipse([px * w - r, py * h - r * 0.5, px * w + r, py * h + r * 0.5],
                     fill=palette[rng.integers(1, len(palette))])
    return plane_from(canvas.resize((width, height), Image.LANCZOS))


def balloon(height, width):
    """A hot-air balloon: its colours, and the plane that tells where it is."""
    y, x = grid(height, width)
    aspect = width / height
    px, py = (x - 0.5) * aspect, y
    top, mouth, radius = 0.02, 0.80, 0.365
    t = np.clip((py - top) / (mouth - top), 1e-6, 1.0)
    # The outline: a sphere above, narrowing to the mouth below.
    upper = np.sqrt(np.clip(1 - ((t - 0.47) / 0.47) ** 2, 0, 1))
    lower = 0.16 + 0.84 * np.cos(np.clip((t - 0.47) / 0.53, 0, 1) * math.pi / 2) ** 0.9
    half = radius * np.where(t < 0.47, upper, lower)
    inside = (py > top) & (py < mouth)
    edge = np.clip((half - np.abs(px)) * height + 0.5, 0, 1) * inside
    bulge = np.clip(px / np.maximum(half, 1e-6), -1, 1)
    gore = (np.arcsin(bulge) / math.pi + 0.5) * 12
    palette = np.array([colour(c) for c in ("#d7263d", "#f6f1e1", "#f49d37", "#f6f1e1", "#1b998b",
                                            "#f6f1e1", "#2e86ab", "#f6f1e1")])
    cloth = palette[np.floor(gore + 0.5).astype(int) % len(palette)]
    band = (t > 0.40) & (t < 0.54)
    zigzag = np.abs((gore * 2) % 2 - 1) * 0.07 + 0.435
    cloth = np.where((band & (t < zigzag + 0.035) & (t > zigzag - 0.005))[..., None],
                     colour("#22223b"), cloth)
    cloth = np.where((t > 0.93)[..., None], colour("#22223b"), cloth)
    beside = np.abs(gore + 0.5 - np.round(gore + 0.5)) * np.sqrt(np.clip(1 - bulge**2, 0, 1))
    seam = smoothstep(0.05, 0.0, beside)
    nx, ny = bulge, (t - 0.42) * 1.7
    nz = np.sqrt(np.clip(1.35 - nx**2 - ny**2 * 0.6, 0.02, 2))
    light = np.clip(-0.50 * nx - 0.45 * ny + 0.62 * nz, 0, 1.2)
    light = np.round((0.42 + 0.72 * light) * 24) / 24  # few tones: the data is stored losslessly
    pixels = cloth * (1 - 0.10 * seam[..., None]) * light[..., None]
    alpha = edge

    def ropes(draw, scale):
        w, h = width * scale, height * scale
        for k in (-1, -0.4, 0.4, 1):
            draw.line([(w * 0.5 + k * 0.056 * h, 0.795 * h), (w * 0.5 + k * 0.045 * h, 0.90 * h)],
                      fill=255, width=int(1.6 * scale))

    def basket(draw, scale):
        w, h = width * scale, height * scale
        draw.polygon([(w * 0.5 - 0.050 * h, 0.90 * h), (w * 0.5 + 0.050 * h, 0.90 * h),
                      (w * 0.5 + 0.042 * h, 0.985 * h), (w * 0.5 - 0.042 * h, 0.985 * h)], fill=255)

    lines, box = mask_of(height, width, ropes), mask_of(height, width, basket)
    pixels = mix(pixels, colour("#3a2e28"), lines * (1 - alpha))
    weave = 0.8 + 0.2 * ((np.floor(px * 160) + np.floor(py * 110)) % 2)
    pixels = np.where((box > 0)[..., None], colour("#9c6b3c") * weave[..., None], pixels)
    pixels = np.where(((box > 0) & (y < 0.915))[..., None], colour("#5c3a21"), pixels)
    alpha = np.clip(np.maximum(np.maximum(alpha, lines), box), 0, 1)
    pixels = np.where((alpha > 0)[..., None], pixels, 0.0)
    return pixels, alpha


def cloud(height, width):
    """A cloud as a plane of opacity: it becomes visible through a soft mask only."""
    y, x = grid(height, width)
    billows = noise(height, width, 1.5, 121)
    body = np.zeros((height, width))
    rng = np.random.default_rng(122)
    for _ in range(16):
        cx, cy = 0.5 + 0.17 * rng.standard_normal(), 0.60 + 0.10 * rng.standard_normal()
        r = 0.10 + 0.10 * rng.random()
        body += np.exp(-(((x - cx) / r) ** 2 + ((y - cy) / (r * 1.3)) ** 2))
    fade = smoothstep(0.0, 0.16, x) * smoothstep(1.0, 0.84, x) * smoothstep(0.0, 0.2, y) * (
        smoothstep(0.96, 0.72, y))
    plane = smoothstep(0.2, 9.0, body * (0.25 + 1.1 * billows)) * fade
    return np.round(plane * 63) / 63 * 0.94


def shadow(height, width):
    """The soft shadow of a print: dark in the middle, faded out before the edge."""
    y, x = grid(height, width)
    margin_x, margin_y = 0.08, 0.08 * width / height
    fade = lambda t, margin: smoothstep(0.0, 2 * margin, t) * smoothstep(0.0, 2 * margin, 1 - t)
    return np.round(fade(x, margin_x) * fade(y, margin_y) * 0.5 * 127) / 127


def fern(height, width):
    """A fern grown by four affine maps; exactly white wherever there is no leaf."""
    rng = np.random.default_rng(131)
    count, rounds = 60000, 70
    px, py = np.zeros(count), np.zeros(count)
    density = np.zeros((height, width))
    for turn in range(rounds):
        pick = rng.random(count)
        stem, left, right = pick < 0.01, (pick >= 0.86) & (pick < 0.93), pick >= 0.93
        nx, ny = 0.85 * px + 0.04 * py, -0.04 * px + 0.85 * py + 1.6
        nx, ny = np.where(stem, 0.0, nx), np.where(stem, 0.16 * py, ny)
        nx = np.where(left, 0.20 * px - 0.26 * py, nx)
        ny = np.where(left, 0.23 * px + 0.22 * py + 1.6, ny)
        nx = np.where(right, -0.15 * px + 0.28 * py, nx)
        ny = np.where(right, 0.26 * px + 0.24 * py + 0.44, ny)
        px, py = nx, ny
        if turn > 15:
            columns = ((px + 2.35) / 5.2 * width).astype(int)
            rows = ((10.15 - py) / 10.3 * height).astype(int)
            keep = (columns >= 0) & (columns < width) & (rows >= 0) & (rows < height)
            np.add.at(density, (rows[keep], columns[keep]), 1.0)
    leaf = np.clip(np.log1p(density) / np.log1p(np.percentile(density[density > 0], 97)), 0, 1)
    tone = np.round((0.62 - 0.56 * leaf) * 12) / 12
    return np.where(density > 0, np.clip(tone, 0.0, 0.7), 1.0)


def city(height, width):
    """A wide skyline at night with its reflection in the river."""
    y, x = grid(height, width)
    picture = gradient(
        y / 0.72,
        [(0.0, "#0a1030"), (0.45, "#2a2f6b"), (0.75, "#8a4b86"), (0.92, "#e8836b"),
         (1.0, "#ffc48a")],
    )
    clouds = noise(height, width, 1.8, 141, stretch=5.0)
    veil = smoothstep(0.55, 0.95, clouds) * smoothstep(0.15, 0.5, y) * 0.45
    picture = mix(picture, colour("#f29a86"), veil)
    stars = stars_plane(height, width, 500, 142) * smoothstep(0.35, 0.05, y)
    picture = picture + stars[..., None]
    moon = np.hypot((x - 0.80) * width / height, y - 0.20)
    picture = picture + colour("#fff0c8") * (0.25 * np.exp(-moon * 9))[..., None]
    picture = mix(picture, colour("#fff7e0"), smoothstep(0.056, 0.051, moon))

    river = int(0.72 * height)
    canvas = image_from(picture)
    draw = ImageDraw.Draw(canvas)
    rng = np.random.default_rng(143)
    profile = ridge(width, 1.4, 144)
    for layer, (low, high, tint) in enumerate(((0.10, 0.34, "#5d4478"), (0.08, 0.42, "#2d2a55"),
                                               (0.05, 0.26, "#12142e"))):
        column = -10
        while column < width:
            block = int(width * (0.010 + 0.016 * rng.random()))
            rise = profile[min(max(column, 0), width - 1)] if layer < 2 else rng.random()
            tall = (low + (high - low) * (0.35 * rng.random() + 0.65 * rise)) * height
            roof = int(river - tall)
            draw.rectangle([column, roof, column + block, river], fill=tint)
            if rng.random() < 0.25:
                mast = column + block // 2
                draw.rectangle([mast, roof - int(0.03 * height), mast + 1, roof], fill=tint)
            windows = ("#ffd98a", "#ffc060", "#fff0c0", "#a8d8ff")
            step_x, step_y = 7, 9
            for wx in range(column + 4, column + block - 4, step_x):
                for wy in range(roof + 6, river - 6, step_y):
                    if rng.random() < (0.16, 0.34, 0.30)[layer]:
                        draw.rectangle([wx, wy, wx + 2, wy + 3], fill=windows[rng.integers(0, 4)])
            column += block + (int(rng.integers(0, 5)) if layer == 2 else int(rng.integers(-6, 9)))
    picture = plane_from(canvas)

    rows = height - river
    source = river - 1 - (np.arange(rows) * 1.9).astype(int)
    mirror = picture[np.clip(source, 0, river - 1)]
    shake = noise(rows, width, 0.8, 145, stretch=25.0)
    swing = (shake - 0.5) * np.linspace(6, 40, rows)[:, None]
    moved = (np.arange(width)[None, :] + swing).astype(int) % width
    mirror = np.take_along_axis(mirror, moved[..., None], axis=1)
    smear = image_from(mirror).filter(ImageFilter.BoxBlur(1)).resize((width, rows // 6), Image.BOX)
    mirror = 0.5 * mirror + 0.5 * plane_from(smear.resize((width, rows), Image.BICUBIC))
    depth = np.linspace(0.25, 0.7, rows)[:, None] * np.ones((1, width))
    picture[river:] = mix(mirror, colour("#141a3c"), depth)
    return picture
