// Content streams: lines joined from parts, and any sequence of drawing calls.

#include <string>
#include <vector>

#include "drawing_pair.h"
#include "generators.h"
#include "models.h"
#include "objects/string_list.h"

namespace {

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
  DrawingPair drawing(*rc::gen::oneOf(rc::gen::element(1.0, 72.0, 2.8346456692944), number));
  const int calls = *rc::gen::inRange(0, 12);
  for (int i = 0; i < calls; ++i) {
    drawing.Draw({*rc::gen::inRange(0, DrawingCall::kKinds), *generators::Box(number),
                  *generators::Color(), *generators::Color(), *number, *rc::gen::arbitrary<int>()});
  }
  RC_ASSERT(drawing.Lines() == drawing.ModelLines());
  RC_ASSERT(drawing.ResourcesAgree());
  RC_ASSERT(drawing.Bounds() == drawing.ModelBounds());
}

RC_GTEST_PROP(DrawingProperties, PagesAreDrawnAsTheModelDrawsThem, ()) {
  DrawAny(generators::Length());
}

RC_GTEST_PROP(DrawingProperties, AnyNumbersAreDrawnAsTheModelDrawsThem, ()) {
  DrawAny(generators::Double());
}

}  // namespace
