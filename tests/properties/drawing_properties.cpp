// Content streams: lines joined from parts, and any sequence of drawing calls.

#include <string>
#include <vector>

#include "generators.h"
#include "graphics/canvas.h"
#include "models.h"
#include "objects/string_list.h"

namespace {

// The sign of a result that is not a number is the processor's own choice.
std::string WithoutNanSigns(std::string text) {
  for (std::size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan", at)) {
    text.erase(at, 1);
  }
  return text;
}

RC_GTEST_PROP(DrawingProperties, PartsAreJoinedAsTheModelJoinsThem, ()) {
  const auto part =
      rc::gen::elementOf(std::vector<std::string>{"", "[", "]", "a", " a", "a ", "[ ", " ]", "[]"});
  const auto lines = *rc::gen::container<std::vector<std::vector<std::string>>>(
      rc::gen::resize(4, rc::gen::container<std::vector<std::string>>(part)));
  JTPDFStringList list;
  std::vector<std::string> expected;
  for (const std::vector<std::string>& p : lines) {
    const auto count = static_cast<unsigned>(p.size());
    if (count > 4) continue;
    const auto text = [&p](std::size_t i) { return i < p.size() ? p[i].c_str() : ""; };
    list.Add(count, text(0), text(1), text(2), text(3));
    if (count > 0) expected.push_back(model::Line(p));
    if (count == 1) list.Add(p[0]);
    if (count == 2) list.Add(p[0], p[1]);
    if (count == 3) list.Add(p[0], p[1], p[2]);
    if (count == 4) list.Add(p[0], p[1], p[2], p[3]);
    if (count > 0) expected.push_back(model::Line(p));
  }
  RC_ASSERT(list.Text() == model::Lines(expected));
}

void DrawAny(const rc::Gen<double>& number) {
  const double unit = *rc::gen::oneOf(rc::gen::element(1.0, 72.0, 2.8346456692944), number);
  JTPDFCanvas canvas(unit);
  model::Canvas expected(unit);
  JTPDFRect bounds = {};
  const int calls = *rc::gen::inRange(0, 12);
  for (int i = 0; i < calls; ++i) {
    const JTPDFRect box = *generators::Box(number);
    const JTPDFRGBColor fill = *generators::Color();
    const JTPDFRGBColor stroke = *generators::Color();
    const double width = *number;
    const int image = *rc::gen::arbitrary<int>();
    switch (*rc::gen::inRange(0, 7)) {
      case 0:
        canvas.Image(image, JTPDFBox(box));
        expected.Image(image, box);
        break;
      case 1:
        canvas.Image(image);
        expected.Image(image, bounds);
        break;
      case 2:
        canvas.Rectangle(JTPDFBox(box), JTPDFColor(fill), JTPDFColor(stroke), width);
        expected.Rectangle(box, fill, stroke, width);
        break;
      case 3:
        canvas.Rectangle(JTPDFBox(box), JTPDFColor(fill));
        expected.Rectangle(box, fill, {255, 255, 255, 0}, 0.0);
        break;
      case 4:
        canvas.Rectangle(JTPDFBox(box), JTPDFColor(stroke), width);
        expected.Rectangle(box, {255, 255, 255, 0}, stroke, width);
        break;
      case 5:
        canvas.Circle(JTPDFBox(box), JTPDFColor(fill), JTPDFColor(stroke), width);
        expected.Circle(box, fill, stroke, width);
        break;
      default:
        canvas.SetBoundingBox(JTPDFBox(box));
        bounds = box;
    }
  }
  RC_ASSERT(WithoutNanSigns(canvas.GetContents().Text()) ==
            WithoutNanSigns(model::Lines(expected.lines)));
  RC_ASSERT(static_cast<const JTPDFDict&>(canvas) == expected.entries);
  RC_ASSERT(WithoutNanSigns(canvas.GetBoundingBox().AsPoints(unit).AsArray()) ==
            WithoutNanSigns(model::BoxArray({bounds.left * unit, bounds.bottom * unit,
                                             bounds.width * unit, bounds.height * unit, 0})));
}

RC_GTEST_PROP(DrawingProperties, PagesAreDrawnAsTheModelDrawsThem, ()) {
  DrawAny(generators::Length());
}

RC_GTEST_PROP(DrawingProperties, AnyNumbersAreDrawnAsTheModelDrawsThem, ()) {
  DrawAny(generators::Double());
}

}  // namespace
