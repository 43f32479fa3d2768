// The profile's stream and the array naming it:
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

#include "document/icc_profile.h"

#include "document/images.h"

int WriteICCProfile(ObjectWriter& out, std::string_view profile, TPdfCompression compression) {
  out.RequireWritable(2);  // and only then a note about the compression
  const std::string filter = FilterValueFromCompression(compression);

  const int profileObject = out.BeginObject();
  // Always three components: only RGB profiles are provided for (kept).
  out.Append("<<\r\n/Alternate /DeviceRGB\r\n/N 3\r\n");
  if (!filter.empty()) out.Compose() << "/Filter " << filter << "\r\n";
  out.BeginStream(profile.size());
  out.WriteRaw(profile.data(), profile.size());
  out.Append("endstream\r\n");  // kept: directly behind the data, as for images
  out.EndObject();

  const int colorSpaceObject = out.BeginObject();
  out.Compose() << "[ /ICCBased " << profileObject << " 0 R ]\r\n";
  out.EndObject();
  return colorSpaceObject;
}
