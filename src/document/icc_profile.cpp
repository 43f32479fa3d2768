// ICC-based colour spaces (ISO 32000-1, 8.6.5.5): the profile's stream and the array naming it.
//
//     3 0 obj                      4 0 obj
//     <<                           [ /ICCBased 3 0 R ]
//     /Alternate /DeviceRGB        endobj
//     /N 3
//     /Filter /FlateDecode
//     /Length 420
//     >>
//     stream
//     ...420 bytes...endstream
//     endobj

#include "document/document.h"
#include "document/images.h"
#include "objects/value_format.h"

int JTPDFDocument::WriteICCProfile(char const* profile, unsigned int size,
                                   TPdfCompression compression, int* /*objectOut*/) {
  RequireWritable();  // and only then a note about the compression
  const std::string filter = FilterValueFromCompression(compression);
  const std::string filterLine = filter.empty() ? filter : "/Filter " + filter;
  const std::string colorSpaceLine = "[ /ICCBased " + AsRefString(NextObject()) + " ]";
  MakeRoom(xref, 2);

  BeginObject();
  WriteLn("<<");
  // Always three components: only RGB profiles are provided for (kept).
  WriteLn("/Alternate /DeviceRGB");
  WriteLn("/N 3");
  WriteLn(filterLine);
  BeginStream(size);
  WriteRaw(profile, size);
  WriteLn("endstream");  // kept: directly behind the data, as for images
  EndObject();

  const int colorSpaceObject = BeginObject();
  WriteLn(colorSpaceLine);
  EndObject();
  return colorSpaceObject;
}
