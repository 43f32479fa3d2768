// drawing_pair - the same drawing made on the library's canvas and on the model's, for the
// properties and the fuzz target that compare them.
#ifndef JTPDF_TESTS_PROPERTIES_DRAWING_PAIR_H
#define JTPDF_TESTS_PROPERTIES_DRAWING_PAIR_H

#include <string>

#include "graphics/canvas.h"
#include "models.h"

// One call on a canvas. Each kind reads what it needs of the rest.
struct DrawingCall {
  static constexpr int kKinds = 8;
  int kind;  // below kKinds
  JTPDFRect box;
  JTPDFRGBColor fill;
  JTPDFRGBColor stroke;
  double lineWidth;
  int image;
};

class DrawingPair {
 public:
  explicit DrawingPair(double unit) : unit_(unit), canvas_(unit), model_(unit) {}

  void Draw(const DrawingCall& call) {
    constexpr JTPDFRGBColor kNoColor = {255, 255, 255, 0};
    const JTPDFBox box(call.box);
    const JTPDFColor fill(call.fill);
    const JTPDFColor stroke(call.stroke);
    switch (call.kind) {
      case 0:
        canvas_.Image(call.image, box);
        model_.Image(call.image, call.box);
        break;
      case 1:
        canvas_.Image(call.image);
        model_.Image(call.image, bounds_);
        break;
      case 2:
        canvas_.Rectangle(box, fill, stroke, call.lineWidth);
        model_.Rectangle(call.box, call.fill, call.stroke, call.lineWidth);
        break;
      case 3:
        canvas_.Rectangle(box, fill);
        model_.Rectangle(call.box, call.fill, kNoColor, 0.0);
        break;
      case 4:
        canvas_.Rectangle(box, stroke, call.lineWidth);
        model_.Rectangle(call.box, kNoColor, call.stroke, call.lineWidth);
        break;
      case 5:
        canvas_.Circle(box, fill, stroke, call.lineWidth);
        model_.Circle(call.box, call.fill, call.stroke, call.lineWidth);
        break;
      case 6:
        canvas_.SetBoundingBox(box);
        bounds_ = call.box;
        break;
      default:
        canvas_.Clear();
        model_ = model::Canvas(unit_);
    }
  }

  std::string Lines() const { return WithoutNanSigns(canvas_.GetContents().Text()); }
  std::string ModelLines() const { return WithoutNanSigns(model::Lines(model_.lines)); }

  bool ResourcesAgree() const { return static_cast<const JTPDFDict&>(canvas_) == model_.entries; }

  // The bounding boxes in points.
  std::string Bounds() const {
    return WithoutNanSigns(canvas_.GetBoundingBox().AsPoints(unit_).AsArray());
  }
  std::string ModelBounds() const {
    return WithoutNanSigns(model::BoxArray({bounds_.left * unit_, bounds_.bottom * unit_,
                                            bounds_.width * unit_, bounds_.height * unit_, 0}));
  }

 private:
  // The sign of a result that is not a number is the processor's own choice.
  static std::string WithoutNanSigns(std::string text) {
    for (std::size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan", at)) {
      text.erase(at, 1);
    }
    return text;
  }

  double unit_;
  JTPDFCanvas canvas_;
  model::Canvas model_;
  JTPDFRect bounds_ = {};
};

#endif  // JTPDF_TESTS_PROPERTIES_DRAWING_PAIR_H
