/* album_pages.c - draws the pages of the album, a function for each, in millimetres. */
#include <math.h>

#include "album.h"

static const JTPDFRGBColor kGold = {247, 190, 92, 255};
static const JTPDFRGBColor kHairline = {206, 200, 188, 255};
static const JTPDFRect kSheet = {0, 0, 240, 180, 0};

/* ---- Drawing: what several pages need ------------------------------------------------------ */

/* The box with every side moved outwards. */
static JTPDFRect Grown(JTPDFRect box, double margin) {
  InsetPdfRect(&box, -margin, -margin);
  return box;
}

/* A disc without an outline: circles always stroke, so the outline has the disc's colour. */
static void DrawDisc(Album* album, double x, double y, double diameter, JTPDFRGBColor color) {
  FillAndStrokePdfCircle(album->doc, Centered(x, y, diameter, diameter, 0), color, color, 0.05);
}

/* Begins a page with its paper. Nothing drawn before is left on the canvas. */
static void BeginPage(Album* album, JTPDFRGBColor paper) {
  ClearPdfCanvas(album->doc);
  SetPdfCanvasBoundingBox(album->doc, kSheet);
  FillPdfRectangle(album->doc, GetPdfCanvasBoundingBox(album->doc), paper);
}

/* Makes a form of what was drawn, and a page of the form. */
static bool EndPage(Album* album, const char* page) {
  int form = 0;
  return Succeeded(WritePdfCanvas(album->doc, &form), "WritePdfCanvas", page) &&
         Succeeded(WritePdfPage(album->doc, form, kSheet, kSheet), "WritePdfPage", page);
}

static void DrawCaption(Album* album, int caption) {
  DrawPdfImageInRect(album->doc, album->image[caption], Box(15, 7, 200, 16));
}

/* A print with a white border, lying on the page with its shadow. */
static void DrawPrint(Album* album, int picture, JTPDFRect box) {
  const JTPDFRect border = Grown(box, 2.5);
  JTPDFRect shadow = Grown(border, 0.08 * border.width);
  shadow.left += 1.2;
  shadow.bottom -= 1.8;
  DrawPdfImageInRect(album->doc, album->image[kShadow], shadow);
  FillAndStrokePdfRectangle(album->doc, border, kWhite, kHairline, 0.1);
  DrawPdfImageInRect(album->doc, album->image[picture], box);
}

/* A strip of adhesive tape that holds a print. */
static void DrawTape(Album* album, double x, double y, double angle, JTPDFRGBColor color) {
  FillPdfRectangle(album->doc, Centered(x, y, 24, 6, angle), color);
  FillPdfRectangle(album->doc, Centered(x, y, 24, 1.4, angle), Blend(color, kWhite, 0.25));
}

/* ---- The pages ----------------------------------------------------------------------------- */

/* A progressive JPEG over the whole page, with a frame and the title. */
static bool CoverPage(Album* album) {
  JTPDFRect frame = kSheet;
  BeginPage(album, kNight);
  DrawPdfImage(album->doc, album->image[kDusk]);
  InsetPdfRect(&frame, 8, 8);
  StrokePdfRectangle(album->doc, frame, kPaper, 0.7);
  InsetPdfRect(&frame, 1.6, 1.6);
  StrokePdfRectangle(album->doc, frame, kPaper, 0.2);
  DrawPdfImageInRect(album->doc, album->image[kTitle], Centered(120, 137, 133, 38, 0));
  return EndPage(album, "cover");
}

/* Three prints; each turns about its own centre. */
static bool PrintsPage(Album* album) {
  const JTPDFRGBColor rose = {222, 148, 142, 255}, mint = {146, 190, 172, 255};
  BeginPage(album, kPaper);
  DrawPrint(album, kForest, Centered(175, 122, 88, 66, -6));
  DrawPrint(album, kCoast, Centered(70, 117, 100, 75, 4));
  DrawPrint(album, kDusk, Centered(139, 66, 84, 63, -2));
  DrawTape(album, 68, 157, 2, mint);
  DrawTape(album, 180, 157, -9, rose);
  DrawTape(album, 140, 100, 1, kGold);
  DrawCaption(album, kCaptionPrints);
  return EndPage(album, "prints");
}

/* Squares inside squares, each turned a little farther than the last. */
static void DrawTunnel(Album* album, double x, double y, double side) {
  for (int i = 0; i < 60; i++) {
    const JTPDFRect square = Centered(x, y, side, side, 4.0 * i);
    FillAndStrokePdfRectangle(album->doc, square, Blend(Rainbow(i / 40.0), kNight, i % 2 * 0.35),
                              kNight, 0.25);
    side *= 0.94;
  }
}

/* Circles set as a sunflower sets its seeds: each a golden angle on from the last. */
static void DrawSunflower(Album* album, double x, double y) {
  const JTPDFRGBColor seed = {70, 36, 30, 255}, petal = {255, 200, 60, 255};
  const double golden = 137.50776405 * kPi / 180;
  for (int i = 240; i > 0; i--) {
    const double part = i / 240.0, radius = 46 * sqrt(part);
    const JTPDFRGBColor fill = Blend(seed, petal, part);
    const JTPDFRect box = Centered(x + radius * cos(i * golden), y + radius * sin(i * golden),
                                   4 + 2.5 * part, 4 + 2.5 * part, 0);
    FillAndStrokePdfCircle(album->doc, box, fill, Blend(fill, kNight, 0.45), 0.35);
  }
}

static bool ShapesPage(Album* album) {
  BeginPage(album, kNight);
  DrawTunnel(album, 66, 102, 94);
  DrawSunflower(album, 176, 102);
  DrawCaption(album, kCaptionShapes);
  return EndPage(album, "shapes");
}

/* Prints round a pivot: the pivot gives the centre of each, its angle turns it in place. */
static void DrawFan(Album* album, double x, double y, double radius) {
  const int pictures[] = {kCoast, kForest, kDusk};
  for (int i = 0; i <= 12; i++) {
    const double angle = 78 - 13.0 * i, turn = angle * kPi / 180;
    DrawPrint(album, pictures[i % 3],
              Centered(x - radius * sin(turn), y + radius * cos(turn), 42, 31.5, angle));
  }
}

/* A picture and its reflection: the same image with a negative height. */
static void DrawReflected(Album* album, int picture, double x, double y, double width) {
  const JTPDFRGBColor water = {64, 52, 104, 255};
  const double left = x - width / 2, height = width * 0.45;
  DrawPdfImageInRect(album->doc, album->image[picture], Box(left, y, width, height));
  DrawPdfImageInRect(album->doc, album->image[picture], Box(left, y, width, -height));
  for (int i = 1; i <= 14; i++) { /* ripples, wider apart and thicker towards the shore */
    const double below = height * i * i / 200.0;
    FillPdfRectangle(album->doc, Box(left, y - below, width, 0.08 + 0.025 * i), water);
  }
}

static bool TurnedPage(Album* album) {
  BeginPage(album, kNight);
  DrawFan(album, 120, 52, 94);
  DrawReflected(album, kDusk, 120, 70, 92);
  DrawCaption(album, kCaptionTurned);
  return EndPage(album, "turned and mirrored");
}

/* Four components, and the four inks that they stand for. */
static bool InksPage(Album* album) {
  const JTPDFRGBColor inks[] = {
      {0, 158, 224, 255}, {226, 0, 122, 255}, {255, 228, 0, 255}, {29, 29, 27, 255}};
  const JTPDFRect photo = Box(15, 34, 210, 131.25);
  BeginPage(album, kPaper);
  DrawPdfImageInRect(album->doc, album->image[kTulips], photo);
  StrokePdfRectangle(album->doc, Grown(photo, 1.5), kInk, 0.3);
  for (int i = 0; i < 4; i++) {
    DrawDisc(album, 198 + 8 * i, 19, 6, inks[i]);
  }
  DrawCaption(album, kCaptionInks);
  return EndPage(album, "four inks");
}

static bool Jpeg2000Page(Album* album) {
  BeginPage(album, kNight);
  DrawPdfImage(album->doc, album->image[kAurora]);
  DrawCaption(album, kCaptionJpeg2000);
  return EndPage(album, "JPEG 2000");
}

/* Everything soft lies over a gradient, a sun of circles and hills of ellipses. */
static void DrawMeadows(Album* album) {
  const JTPDFRGBColor sun = {255, 240, 200, 255};
  const JTPDFRGBColor far = {126, 160, 120, 255}, near = {52, 96, 66, 255};
  DrawPdfImage(album->doc, album->image[kSky]);
  DrawDisc(album, 196, 132, 34, Blend(sun, kWhite, 0.2));
  for (int i = 0; i < 4; i++) { /* they reach beyond the sheet: the bounding box cuts them off */
    const JTPDFRGBColor green = Blend(far, near, i / 3.0);
    const JTPDFRect hill = Centered(230 - 75 * i, -6 - 11 * i, 330 - 20 * i, 112, 0);
    FillAndStrokePdfCircle(album->doc, hill, green, green, 0.05);
  }
}

static void DrawBalloon(Album* album, double x, double y, double width, double angle) {
  DrawPdfImageInRect(album->doc, album->image[kBalloon],
                     Centered(x, y, width, width * 600 / 440, angle));
}

static void DrawCloud(Album* album, double x, double y, double width) {
  DrawPdfImageInRect(album->doc, album->image[kCloud], Centered(x, y, width, width * 240 / 420, 0));
}

static bool SoftMaskPage(Album* album) {
  BeginPage(album, kPaper);
  DrawMeadows(album);
  DrawCloud(album, 60, 152, 90);
  DrawCloud(album, 190, 120, 80);
  DrawBalloon(album, 122, 140, 16, -3);
  DrawBalloon(album, 212, 86, 22, 2);
  DrawBalloon(album, 156, 108, 36, 4);
  DrawBalloon(album, 68, 99, 72, -4);
  DrawCloud(album, 112, 80, 110);
  DrawCloud(album, 26, 112, 66);
  DrawCaption(album, kCaptionSoftMask);
  return EndPage(album, "soft masks");
}

/* A pattern of tiles for something to show through. */
static void DrawTiles(Album* album, JTPDFRect area, int columns, int rows) {
  const JTPDFRGBColor warm = {255, 138, 96, 255}, cool = {96, 116, 224, 255};
  const double width = area.width / columns, height = area.height / rows;
  for (int row = 0; row < rows; row++) {
    for (int column = 0; column < columns; column++) {
      const double x = area.left + (column + 0.5) * width, y = area.bottom + (row + 0.5) * height;
      const JTPDFRGBColor hue = Blend(warm, cool, (column + row) / (columns + rows - 2.0));
      /* A little too large, so that no hairline shows between two tiles. */
      FillPdfRectangle(album->doc, Centered(x, y, width + 0.1, height + 0.1, 0),
                       Blend(hue, kWhite, 0.55));
      FillPdfRectangle(album->doc, Centered(x, y, width * 0.6, height * 0.6, 45),
                       Blend(hue, kWhite, 0.25));
      DrawDisc(album, x, y, height * 0.3, Blend(hue, kWhite, 0.75));
    }
  }
}

static bool ColorKeyPage(Album* album) {
  const JTPDFRect area = Box(15, 32, 210, 135);
  BeginPage(album, kPaper);
  DrawTiles(album, area, 14, 9);
  DrawPdfImageInRect(album->doc, album->image[kFernPlain], Centered(67, 99.5, 65.1, 124, 0));
  DrawPdfImageInRect(album->doc, album->image[kFernKeyed], Centered(172, 99.5, 65.1, 124, 0));
  DrawCaption(album, kCaptionColorKey);
  return EndPage(album, "colour key");
}

static bool ProfilePage(Album* album) {
  BeginPage(album, kPaper);
  DrawPrint(album, kMaplePlain, Centered(66.5, 100, 96, 114, 0));
  DrawPrint(album, kMapleProfile, Centered(173.5, 100, 96, 114, 0));
  DrawCaption(album, kCaptionProfile);
  return EndPage(album, "colour profile");
}

/* Two hairlines beside every corner show where the sheet is to be cut. */
static void DrawCropMarks(Album* album, JTPDFRect trim) {
  const double gap = 5, length = 8, thin = 0.2;
  for (int corner = 0; corner < 4; corner++) {
    const double x = trim.left + (corner & 1 ? trim.width : 0);
    const double y = trim.bottom + (corner & 2 ? trim.height : 0);
    const double outX = x + (corner & 1 ? 1 : -1) * (gap + length / 2);
    const double outY = y + (corner & 2 ? 1 : -1) * (gap + length / 2);
    FillPdfRectangle(album->doc, Centered(outX, y, length, thin, 0), kInk);
    FillPdfRectangle(album->doc, Centered(x, outY, thin, length, 0), kInk);
  }
}

/* A register mark: a ring and a cross. */
static void DrawTarget(Album* album, double x, double y) {
  FillAndStrokePdfCircle(album->doc, Centered(x, y, 5, 5, 0), kPaper, kInk, 0.2);
  FillPdfRectangle(album->doc, Centered(x, y, 8, 0.2, 0), kInk);
  FillPdfRectangle(album->doc, Centered(x, y, 0.2, 8, 0), kInk);
}

static void DrawColorBar(Album* album, double left, double bottom) {
  for (int i = 0; i < 16; i++) {
    FillAndStrokePdfRectangle(album->doc, Box(left + 6 * i, bottom, 6, 6),
                              i < 10 ? Rainbow(i / 10.0) : Blend(kWhite, kInk, (i - 10) / 5.0),
                              kPaper, 0.2);
  }
}

/* One form, two pages: the sheet as the printer gets it, and what is left when it has been cut. */
static bool SheetPages(Album* album) {
  const JTPDFRect trim = Box(21, 72, 198, 62);
  int form = 0;
  BeginPage(album, kPaper);
  DrawPdfImageInRect(album->doc, album->image[kCity], Grown(trim, 3));
  DrawCropMarks(album, trim);
  DrawTarget(album, 120, 145);
  DrawTarget(album, 120, 57);
  DrawColorBar(album, 72, 152);
  DrawCaption(album, kCaptionSheet);
  return Succeeded(WritePdfCanvas(album->doc, &form), "WritePdfCanvas", "sheet") &&
         Succeeded(WritePdfPage(album->doc, form, kSheet, kSheet), "WritePdfPage", "sheet") &&
         Succeeded(WritePdfPage(album->doc, form, trim, kSheet), "WritePdfPage", "cut sheet");
}

/* The largest box of that shape in the middle of the cell. */
static JTPDFRect Fitted(JTPDFRect cell, double width, double height) {
  const double scale = fmin(cell.width / width, cell.height / height);
  return Centered(cell.left + cell.width / 2, cell.bottom + cell.height / 2, width * scale,
                  height * scale, 0);
}

static bool ContactPage(Album* album) {
  const struct {
    int image;
    double width, height;
  } frames[] = {{kDusk, 4, 3},           {kCoast, 4, 3},   {kForest, 4, 3},
                {kTulips, 8, 5},         {kAurora, 4, 3},  {kMaplePlain, 64, 76},
                {kMapleProfile, 64, 76}, {kCity, 3, 1},    {kFernKeyed, 42, 80},
                {kBalloon, 44, 60},      {kCloud, 42, 24}, {kSky, 1, 1}};
  const JTPDFRGBColor film = {44, 41, 68, 255}, slot = {66, 62, 96, 255};
  BeginPage(album, kNight);
  for (int i = 0; i < (int)COUNT(frames); i++) {
    const int row = i / 4, column = i % 4;
    const JTPDFRect cell = Box(15 + 53.5 * column, 125 - 46.5 * row, 49.5, 42.5);
    JTPDFRect inner = cell;
    InsetPdfRect(&inner, 3, 3);
    FillAndStrokePdfRectangle(album->doc, cell, film, slot, 0.2);
    if (frames[i].image == kFernKeyed) FillPdfRectangle(album->doc, inner, kPaper);
    DrawPdfImageInRect(album->doc, album->image[frames[i].image],
                       Fitted(inner, frames[i].width, frames[i].height));
  }
  DrawCaption(album, kCaptionContact);
  return EndPage(album, "contact sheet");
}

bool WritePages(Album* album) {
  return CoverPage(album) && PrintsPage(album) && ShapesPage(album) && TurnedPage(album) &&
         InksPage(album) && Jpeg2000Page(album) && SoftMaskPage(album) && ColorKeyPage(album) &&
         ProfilePage(album) && SheetPages(album) && ContactPage(album);
}
