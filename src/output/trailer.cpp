// The cross-reference table and the trailer.

#include "output/trailer.h"

void WriteTrailer(ObjectWriter& out, int infoObject, int rootObject) {
  const long long start = std::streamoff(out.WriteLn("xref"));
  const std::vector<std::streamoff>& positions = out.Positions();
  const auto size = static_cast<long long>(positions.size());
  out.Compose() << "0 " << size << "\r\n";
  // Each entry is 20 bytes with its line end (ISO 32000-1, 7.5.4). A position has ten digits, and
  // more only where the file has them.
  for (std::size_t i = 0; i < positions.size(); ++i) {
    out.Compose().PaddedInteger(positions[i], 10) << (i == 0 ? " 65535 f\r\n" : " 00000 n\r\n");
  }
  out.Compose() << "trailer\r\n<<\r\n/Size " << size << "\r\n/Root " << rootObject << " 0 R\r\n";
  if (infoObject != 0) out.Compose() << "/Info " << infoObject << " 0 R\r\n";
  out.Compose() << ">>\r\nstartxref\r\n" << start << "\r\n%%EOF\r\n";
}
