// Fuzz target: any drawing has the model's lines and resources.

#include "byte_source.h"
#include "drawing_pair.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource source(data, size);
  DrawingPair drawing(source.Double());
  while (!source.Empty()) {
    // The bytes are taken in the order of the braces.
    drawing.Draw({source.Byte() % DrawingCall::kKinds, source.Box(), source.Color(), source.Color(),
                  source.Double(), source.Integer()});
  }
  RequireEqual(drawing.Lines(), drawing.ModelLines(), "the drawing is the model's");
  Require(drawing.ResourcesAgree(), "the resources are the model's");
  RequireEqual(drawing.Bounds(), drawing.ModelBounds(), "the bounding box is the model's");
  return 0;
}
