// Fuzz target: any drawing has the model's lines and resources.

#include "graphics/canvas.h"
#include "byte_source.h"
#include "models.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource source(data, size);
  const double unit = source.Double();
  JTPDFCanvas canvas(unit);
  model::Canvas expected(unit);
  JTPDFRect bounds = {};
  while (!source.Empty()) {
    const std::uint8_t call = source.Byte() % 8;
    const JTPDFRect box = source.Box();
    const JTPDFRGBColor fill = source.Color();
    const JTPDFRGBColor stroke = source.Color();
    const double width = source.Double();
    const int image = source.Integer();
    switch (call) {
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
      case 6:
        canvas.SetBoundingBox(JTPDFBox(box));
        bounds = box;
        break;
      default:
        canvas.Clear();
        expected = model::Canvas(unit);
    }
  }
  RequireEqual(WithoutNanSigns(canvas.GetContents().Text()),
               WithoutNanSigns(model::Lines(expected.lines)), "the drawing is the model's");
  Require(static_cast<const JTPDFDict&>(canvas) == expected.entries,
          "the resources are the model's");
  RequireEqual(WithoutNanSigns(canvas.GetBoundingBox().AsArray()),
               WithoutNanSigns(model::BoxArray(bounds)), "the bounding box is the model's");
  return 0;
}
