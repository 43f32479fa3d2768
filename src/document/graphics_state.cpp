// The graphics state dictionary (ISO 32000-1, 8.4.5).

#include "document/graphics_state.h"

int WriteGraphicsState(ObjectWriter& out) {
  const int number = out.BeginObject();
  // In this order, neither sorted nor grouped (kept).
  out.Append(
      "<<\r\n"
      "/AIS false\r\n"
      "/BM /Normal\r\n"
      "/ca 1.0\r\n"
      "/CA 1.0\r\n"
      "/OP false\r\n"
      "/op false\r\n"
      "/OPM 1\r\n"
      "/SA true\r\n"
      "/SMask /None\r\n"
      "/Type /ExtGState\r\n"
      ">>\r\n");
  out.EndObject();
  return number;
}
