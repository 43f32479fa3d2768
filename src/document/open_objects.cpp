// Objects of the host's:
//
//     7 0 obj                 8 0 obj
//     [0 1]                   <<
//     endobj                  /Filter /FlateDecode
//                             /Length 9
//                             >>
//                             stream
//                             123456789
//                             endstream
//                             endobj

#include "document/open_objects.h"

#include "objects/entry_tree.h"
#include "objects/syntax.h"

namespace {

int Begin(ObjectWriter& out, int object) {
  if (object == kNewObject) return out.BeginObject();
  out.BeginReserved(object);
  return object;
}

std::string StreamDictionary(ArrayView<JTPDFEntry> entries) {
  EntryTree tree;
  for (const JTPDFEntry& entry : entries) {
    const std::string_view key = entry.key;
    if (key == "/Length" || StartsWith(key, "/Length/") || !tree.Set(key, entry.value)) {
      RefuseArgument("A stream's entry is not a path of names with one object");
    }
  }
  return tree.AsString();
}

}  // namespace

void RequireReserved(const ObjectWriter& out, int object) {
  if (!out.IsReserved(object)) RefuseArgument("The object number is not reserved");
}

int WriteObject(ObjectWriter& out, int object, const char* value) {
  if (!IsDirectObject(value)) RefuseArgument("The text is not exactly one direct object");
  const int number = Begin(out, object);
  out.Append(value);
  out.Append(kLineEnd);
  out.EndObject();
  return number;
}

int WriteStream(ObjectWriter& out, int object, ArrayView<JTPDFEntry> entries,
                ArrayView<JTPDFPiece> pieces) {
  const std::string dictionary = StreamDictionary(entries);
  std::size_t size = 0;
  for (const JTPDFPiece& piece : pieces) size += piece.size;

  const int number = Begin(out, object);
  out.Append("<<\r\n");
  out.Append(dictionary);
  out.BeginStream(size);
  for (const JTPDFPiece& piece : pieces) out.WriteRaw(piece.data, piece.size);
  out.Append("\r\nendstream\r\n");
  out.EndObject();
  return number;
}
