// album_pages.cpp - draws the pages of the album, a function for each, in millimetres.
#include <algorithm>
#include <cmath>
#include <iterator>

#include "album.hpp"

namespace album {
namespace {

constexpr Color kGold{247, 190, 92};
constexpr Color kHairline{206, 200, 188};
constexpr Box kSheet{0_mm, 0_mm, 240_mm, 180_mm};

constexpr Box At(double left, double bottom, double width, double height) {
  constexpr jtpdf::Unit mm = jtpdf::millimeter;
  return {left * mm, bottom * mm, width * mm, height * mm};
}

double Millimeters(jtpdf::Length length) {
  return length.in(jtpdf::millimeter);
}

// The box with every side moved outwards.
Box Grown(const Box& box, jtpdf::Length margin) {
  return box.inset(-margin, -margin);
}

class PageWriter {
 public:
  PageWriter(jtpdf::Document& doc, const Images& images) : doc_(doc), images_(images) {}

  void WriteAll() {
    Cover();
    Prints();
    Shapes();
    Turned();
    Inks();
    Jpeg2000();
    SoftMask();
    ColorKey();
    WithProfile();
    Sheets();
    Contacts();
  }

 private:
  // ---- What several pages need

  jtpdf::Image Image(std::string_view name) const { return images_.at(name); }

  // Begins a page with its paper. Nothing drawn before is left on the canvas.
  void Begin(Color paper) {
    doc_.clear_canvas();
    doc_.set_canvas_box(kSheet);
    doc_.fill_rectangle(doc_.canvas_box(), paper);
  }

  // Makes a form of what was drawn, and a page of the form.
  void End() { doc_.write_page(doc_.write_canvas(), kSheet); }

  void DrawCaption(std::string_view caption) {
    doc_.draw_image(Image(caption), At(15, 7, 200, 16));
  }

  // A disc without an outline: circles always stroke, so the outline has the disc's colour.
  void DrawDisc(double x, double y, double diameter, Color color) {
    doc_.fill_and_stroke_circle(Centered(x, y, diameter, diameter), color, color, 0.05_mm);
  }

  // A print with a white border, lying on the page with its shadow.
  void DrawPrint(std::string_view picture, const Box& box) {
    const Box border = Grown(box, 2.5_mm);
    Box shadow = Grown(border, 0.08 * border.width);
    shadow.left = shadow.left + 1.2_mm;
    shadow.bottom = shadow.bottom - 1.8_mm;
    doc_.draw_image(Image("shadow"), shadow);
    doc_.fill_and_stroke_rectangle(border, Color::white, kHairline, 0.1_mm);
    doc_.draw_image(Image(picture), box);
  }

  // A strip of adhesive tape that holds a print.
  void DrawTape(double x, double y, double angle, Color color) {
    doc_.fill_rectangle(Centered(x, y, 24, 6, angle), color);
    doc_.fill_rectangle(Centered(x, y, 24, 1.4, angle), Blend(color, Color::white, 0.25));
  }

  // ---- The pages

  // A progressive JPEG over the whole page, with a frame and the title.
  void Cover() {
    Begin(kNight);
    doc_.draw_image(Image("dusk"));
    const Box frame = kSheet.inset(8_mm, 8_mm);
    doc_.stroke_rectangle(frame, kPaper, 0.7_mm);
    doc_.stroke_rectangle(frame.inset(1.6_mm, 1.6_mm), kPaper, 0.2_mm);
    doc_.draw_image(Image("title"), Centered(120, 137, 133, 38));
    End();
  }

  // Three prints; each turns about its own centre.
  void Prints() {
    constexpr Color kRose{222, 148, 142}, kMint{146, 190, 172};
    Begin(kPaper);
    DrawPrint("forest", Centered(175, 122, 88, 66, -6));
    DrawPrint("coast", Centered(70, 117, 100, 75, 4));
    DrawPrint("dusk", Centered(139, 66, 84, 63, -2));
    DrawTape(68, 157, 2, kMint);
    DrawTape(180, 157, -9, kRose);
    DrawTape(140, 100, 1, kGold);
    DrawCaption("caption-prints");
    End();
  }

  // Squares inside squares, each turned a little farther than the last.
  void DrawTunnel(double x, double y, double side) {
    for (int i = 0; i < 60; i++) {
      doc_.fill_and_stroke_rectangle(Centered(x, y, side, side, 4.0 * i),
                                     Blend(Rainbow(i / 40.0), kNight, i % 2 * 0.35), kNight,
                                     0.25_mm);
      side *= 0.94;
    }
  }

  // Circles set as a sunflower sets its seeds: each a golden angle on from the last.
  void DrawSunflower(double x, double y) {
    constexpr Color kSeed{70, 36, 30}, kPetal{255, 200, 60};
    const double golden = 137.50776405 * kPi / 180;
    for (int i = 240; i > 0; i--) {
      const double part = i / 240.0, radius = 46 * std::sqrt(part), size = 4 + 2.5 * part;
      const Color fill = Blend(kSeed, kPetal, part);
      doc_.fill_and_stroke_circle(Centered(x + radius * std::cos(i * golden),
                                           y + radius * std::sin(i * golden), size, size),
                                  fill, Blend(fill, kNight, 0.45), 0.35_mm);
    }
  }

  void Shapes() {
    Begin(kNight);
    DrawTunnel(66, 102, 94);
    DrawSunflower(176, 102);
    DrawCaption("caption-shapes");
    End();
  }

  // Prints round a pivot: the pivot gives the centre of each, its angle turns it in place.
  void DrawFan(double x, double y, double radius) {
    constexpr std::string_view kNames[] = {"coast", "forest", "dusk"};
    for (int i = 0; i <= 12; i++) {
      const double angle = 78 - 13.0 * i, turn = angle * kPi / 180;
      DrawPrint(kNames[i % 3], Centered(x - radius * std::sin(turn), y + radius * std::cos(turn),
                                        42, 31.5, angle));
    }
  }

  // A picture and its reflection: the same image with a negative height.
  void DrawReflected(std::string_view picture, double x, double y, double width) {
    constexpr Color kWater{64, 52, 104};
    const double left = x - width / 2, height = width * 0.45;
    doc_.draw_image(Image(picture), At(left, y, width, height));
    doc_.draw_image(Image(picture), At(left, y, width, -height));
    for (int i = 1; i <= 14; i++) {  // ripples, wider apart and thicker towards the shore
      const double below = height * i * i / 200.0;
      doc_.fill_rectangle(At(left, y - below, width, 0.08 + 0.025 * i), kWater);
    }
  }

  void Turned() {
    Begin(kNight);
    DrawFan(120, 52, 94);
    DrawReflected("dusk", 120, 70, 92);
    DrawCaption("caption-turned");
    End();
  }

  // Four components, and the four inks that they stand for.
  void Inks() {
    constexpr Color kInks[] = {{0, 158, 224}, {226, 0, 122}, {255, 228, 0}, {29, 29, 27}};
    constexpr Box kPhoto = At(15, 34, 210, 131.25);
    Begin(kPaper);
    doc_.draw_image(Image("tulips"), kPhoto);
    doc_.stroke_rectangle(Grown(kPhoto, 1.5_mm), kInk, 0.3_mm);
    double x = 198;
    for (const Color ink : kInks) {
      DrawDisc(x, 19, 6, ink);
      x += 8;
    }
    DrawCaption("caption-inks");
    End();
  }

  void Jpeg2000() {
    Begin(kNight);
    doc_.draw_image(Image("aurora"));
    DrawCaption("caption-jpeg2000");
    End();
  }

  // Everything soft lies over a gradient, a sun of circles and hills of ellipses.
  void DrawMeadows() {
    constexpr Color kSun{255, 240, 200}, kFar{126, 160, 120}, kNear{52, 96, 66};
    doc_.draw_image(Image("sky"));
    DrawDisc(196, 132, 34, Blend(kSun, Color::white, 0.2));
    for (int i = 0; i < 4; i++) {  // they reach beyond the sheet: the bounding box cuts them off
      const Color green = Blend(kFar, kNear, i / 3.0);
      doc_.fill_and_stroke_circle(Centered(230 - 75 * i, -6 - 11 * i, 330 - 20 * i, 112), green,
                                  green, 0.05_mm);
    }
  }

  void DrawBalloon(double x, double y, double width, double angle) {
    doc_.draw_image(Image("balloon"), Centered(x, y, width, width * 600 / 440, angle));
  }

  void DrawCloud(double x, double y, double width) {
    doc_.draw_image(Image("cloud"), Centered(x, y, width, width * 240 / 420));
  }

  void SoftMask() {
    Begin(kPaper);
    DrawMeadows();
    DrawCloud(60, 152, 90);
    DrawCloud(190, 120, 80);
    DrawBalloon(122, 140, 16, -3);
    DrawBalloon(212, 86, 22, 2);
    DrawBalloon(156, 108, 36, 4);
    DrawBalloon(68, 99, 72, -4);
    DrawCloud(112, 80, 110);
    DrawCloud(26, 112, 66);
    DrawCaption("caption-softmask");
    End();
  }

  // A pattern of tiles for something to show through.
  void DrawTiles(const Box& area, int columns, int rows) {
    constexpr Color kWarm{255, 138, 96}, kCool{96, 116, 224};
    const double width = Millimeters(area.width) / columns;
    const double height = Millimeters(area.height) / rows;
    for (int row = 0; row < rows; row++) {
      for (int column = 0; column < columns; column++) {
        const double x = Millimeters(area.left) + (column + 0.5) * width;
        const double y = Millimeters(area.bottom) + (row + 0.5) * height;
        const Color hue = Blend(kWarm, kCool, (column + row) / (columns + rows - 2.0));
        // A little too large, so that no hairline shows between two tiles.
        doc_.fill_rectangle(Centered(x, y, width + 0.1, height + 0.1),
                            Blend(hue, Color::white, 0.55));
        doc_.fill_rectangle(Centered(x, y, width * 0.6, height * 0.6, 45),
                            Blend(hue, Color::white, 0.25));
        DrawDisc(x, y, height * 0.3, Blend(hue, Color::white, 0.75));
      }
    }
  }

  void ColorKey() {
    Begin(kPaper);
    DrawTiles(At(15, 32, 210, 135), 14, 9);
    doc_.draw_image(Image("fern"), Centered(67, 99.5, 65.1, 124));
    doc_.draw_image(Image("fern, white left out"), Centered(172, 99.5, 65.1, 124));
    DrawCaption("caption-colorkey");
    End();
  }

  void WithProfile() {
    Begin(kPaper);
    DrawPrint("maple", Centered(66.5, 100, 96, 114));
    DrawPrint("maple with its profile", Centered(173.5, 100, 96, 114));
    DrawCaption("caption-profile");
    End();
  }

  // Two hairlines beside every corner show where the sheet is to be cut.
  void DrawCropMarks(const Box& trim) {
    constexpr double kGap = 5, kLength = 8, kThin = 0.2;
    for (int corner = 0; corner < 4; corner++) {
      const bool right = corner & 1, top = corner & 2;
      const double x = Millimeters(trim.left) + (right ? Millimeters(trim.width) : 0);
      const double y = Millimeters(trim.bottom) + (top ? Millimeters(trim.height) : 0);
      const double out_x = x + (right ? 1 : -1) * (kGap + kLength / 2);
      const double out_y = y + (top ? 1 : -1) * (kGap + kLength / 2);
      doc_.fill_rectangle(Centered(out_x, y, kLength, kThin), kInk);
      doc_.fill_rectangle(Centered(x, out_y, kThin, kLength), kInk);
    }
  }

  // A register mark: a ring and a cross.
  void DrawTarget(double x, double y) {
    doc_.fill_and_stroke_circle(Centered(x, y, 5, 5), kPaper, kInk, 0.2_mm);
    doc_.fill_rectangle(Centered(x, y, 8, 0.2), kInk);
    doc_.fill_rectangle(Centered(x, y, 0.2, 8), kInk);
  }

  void DrawColorBar(double left, double bottom) {
    for (int i = 0; i < 16; i++) {
      doc_.fill_and_stroke_rectangle(
          At(left + 6 * i, bottom, 6, 6),
          i < 10 ? Rainbow(i / 10.0) : Blend(Color::white, kInk, (i - 10) / 5.0), kPaper, 0.2_mm);
    }
  }

  // One form, two pages: the sheet as the printer gets it, and what is left when it has been cut.
  void Sheets() {
    constexpr Box kTrim = At(21, 72, 198, 62);
    Begin(kPaper);
    doc_.draw_image(Image("city"), Grown(kTrim, 3_mm));
    DrawCropMarks(kTrim);
    DrawTarget(120, 145);
    DrawTarget(120, 57);
    DrawColorBar(72, 152);
    DrawCaption("caption-sheet");
    const jtpdf::Form form = doc_.write_canvas();
    doc_.write_page(form, kSheet);
    doc_.write_page(form, jtpdf::CropBox(kTrim), jtpdf::MediaBox(kSheet));
  }

  // The largest box of that shape in the middle of the cell.
  static Box Fitted(const Box& cell, double width, double height) {
    const double cell_width = Millimeters(cell.width), cell_height = Millimeters(cell.height);
    const double scale = std::min(cell_width / width, cell_height / height);
    return Centered(Millimeters(cell.left) + cell_width / 2,
                    Millimeters(cell.bottom) + cell_height / 2, width * scale, height * scale);
  }

  void Contacts() {
    constexpr struct {
      std::string_view image;
      double width, height;
    } kFrames[] = {{"dusk", 4, 3},
                   {"coast", 4, 3},
                   {"forest", 4, 3},
                   {"tulips", 8, 5},
                   {"aurora", 4, 3},
                   {"maple", 64, 76},
                   {"maple with its profile", 64, 76},
                   {"city", 3, 1},
                   {"fern, white left out", 42, 80},
                   {"balloon", 44, 60},
                   {"cloud", 42, 24},
                   {"sky", 1, 1}};
    constexpr Color kFilm{44, 41, 68}, kSlot{66, 62, 96};
    Begin(kNight);
    int i = 0;
    for (const auto& [image, width, height] : kFrames) {
      const int row = i / 4, column = i % 4;
      const Box cell = At(15 + 53.5 * column, 125 - 46.5 * row, 49.5, 42.5);
      const Box inner = cell.inset(3_mm, 3_mm);
      doc_.fill_and_stroke_rectangle(cell, kFilm, kSlot, 0.2_mm);
      if (image == "fern, white left out") doc_.fill_rectangle(inner, kPaper);
      doc_.draw_image(Image(image), Fitted(inner, width, height));
      i++;
    }
    DrawCaption("caption-contact");
    End();
  }

  jtpdf::Document& doc_;
  const Images& images_;
};

}  // namespace

void WritePages(jtpdf::Document& doc, const Images& images) {
  PageWriter(doc, images).WriteAll();
}

}  // namespace album
