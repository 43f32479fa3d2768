// Tokens, and the objects that they make up.

#include "free_reader.h"

#include <cctype>
#include <utility>
#include <vector>

namespace golden {
namespace {

constexpr int kDeepest = 200;  // the library's own dictionaries around a host's value

struct Value {
  DictEntry entry;
  bool is_dict = false;
  std::vector<Value> items;  // of an array; of a dictionary keys and values by turns
};

bool IsSpace(int byte) {
  return byte == 0 || byte == '\t' || byte == '\n' || byte == '\f' || byte == '\r' || byte == ' ';
}

bool IsRegular(int byte) {
  return byte > ' ' && byte < 0x7F &&
         std::string("()<>[]{}/%").find(static_cast<char>(byte)) == std::string::npos;
}

bool IsInteger(const Value& node) {
  return node.entry.kind == DictEntry::kNumber && !node.is_dict && node.entry.text.size() <= 10 &&
         node.entry.text.find_first_not_of("0123456789") == std::string::npos;
}

void GatherReferences(const Value& node, std::vector<std::int64_t>& to) {
  to.insert(to.end(), node.entry.references.begin(), node.entry.references.end());
  if (!node.is_dict) return;
  for (const Value& item : node.items) GatherReferences(item, to);
}

class Parser {
 public:
  explicit Parser(ByteReader& in) : in_(in) {}

  // Objects up to the end: "]", ">>", or at the outermost level a keyword, which is stored.
  std::vector<Value> Sequence(const std::string& end, int depth) {
    if (depth > kDeepest) Fail("objects too deep in each other");
    std::vector<Value> nodes;
    for (;;) {
      SkipSpace();
      start_ = in_.Position();
      const int byte = in_.Peek();
      if (byte == '>') {
        in_.Expect(">>", "the end of a dictionary");
        if (end != ">>") Fail(">> without <<");
        return nodes;
      }
      if (byte == ']') {
        in_.Get();
        if (end == "]") return nodes;
        nodes.push_back(Leaf(DictEntry::kArray, "]"));  // kept: kids of a document without pages
      } else if (IsRegular(byte)) {
        std::string word = Word();
        if (word == "R") {
          FoldReference(nodes);
        } else if (word == "endobj" || word == "stream") {
          if (!end.empty()) Fail("\"" + word + "\" inside of an object");
          keyword = std::move(word);
          return nodes;
        } else {
          nodes.push_back(Plain(word));
        }
      } else {
        nodes.push_back(Delimited(byte, depth));
      }
    }
  }

  [[noreturn]] void Fail(const std::string& what) const { throw StructureError(start_, what); }

  std::string keyword;

 private:
  Value Leaf(DictEntry::Kind kind, std::string text) const {
    return {{"", kind, std::move(text), {}, 0, start_}, false, {}};
  }

  Value Plain(const std::string& word) const {
    if (word == "true" || word == "false") return Leaf(DictEntry::kBoolean, word);
    const bool number = word.find_first_not_of("+-.0123456789") == std::string::npos;
    if (!number && word != "null") Fail("\"" + Escaped(word) + "\" is no value");
    return Leaf(DictEntry::kNumber, word);
  }

  void FoldReference(std::vector<Value>& nodes) const {
    const std::size_t size = nodes.size();
    if (size < 2 || !IsInteger(nodes[size - 2]) || nodes[size - 1].entry.text != "0") {
      Fail("a reference to no number");
    }
    Value& reference = nodes[size - 2];
    reference.entry.kind = DictEntry::kReference;
    reference.entry.references = {std::stoll(reference.entry.text)};
    reference.entry.text += " 0 R";
    nodes.pop_back();
  }

  Value Delimited(int byte, int depth) {
    in_.Get();
    if (byte == '/') return Leaf(DictEntry::kName, "/" + Word());
    if (byte == '(') return Leaf(DictEntry::kString, String());
    if (byte == '[') return Array(depth);
    if (byte != '<') Fail("a byte that begins no object");
    if (in_.Peek() != '<') return Leaf(DictEntry::kString, HexString());
    in_.Get();
    Value dict = Leaf(DictEntry::kArray, "<<");
    dict.is_dict = true;
    dict.items = Sequence(">>", depth + 1);
    return dict;
  }

  Value Array(int depth) {
    Value array = Leaf(DictEntry::kArray, "[");
    array.items = Sequence("]", depth + 1);
    array.entry.items = array.items.size();
    for (const Value& item : array.items) GatherReferences(item, array.entry.references);
    return array;
  }

  std::string Word() {
    std::string word;
    while (IsRegular(in_.Peek())) word += static_cast<char>(in_.Get());
    return word;
  }

  std::string String() {
    std::string text = "(";
    for (int open = 1; open > 0;) {
      const int byte = in_.Get();
      if (byte < 0) Fail("a string without an end");
      text += static_cast<char>(byte);
      if (byte == '\\') text += static_cast<char>(in_.Get());
      open += byte == '(' ? 1 : byte == ')' ? -1 : 0;
    }
    return text;
  }

  std::string HexString() {
    std::string text = "<";
    for (int byte = in_.Get(); byte != '>'; byte = in_.Get()) {
      if (!IsSpace(byte) && !std::isxdigit(byte)) Fail("a hexadecimal string with another byte");
      text += static_cast<char>(byte);
    }
    return text + ">";
  }

  void SkipSpace() {
    while (IsSpace(in_.Peek())) in_.Get();
  }

  ByteReader& in_;
  std::uint64_t start_ = 0;  // of the token at hand
};

// The entries below a path, in the order in which they stand.
void Flatten(const Parser& parser, const Value& dict, const std::string& path, Dict& to) {
  if (dict.items.size() % 2 != 0) parser.Fail("a dictionary with a key that has no value");
  for (std::size_t i = 0; i < dict.items.size(); i += 2) {
    const Value& key = dict.items[i];
    if (key.entry.kind != DictEntry::kName) parser.Fail("a dictionary with a key that is no name");
    DictEntry entry = dict.items[i + 1].entry;
    entry.path = path + key.entry.text;
    if (dict.items[i + 1].is_dict) {
      Flatten(parser, dict.items[i + 1], entry.path, to);
    } else {
      to.entries.push_back(std::move(entry));
    }
  }
}

}  // namespace

FreeObject ReadFreeObject(ByteReader& in) {
  Parser parser(in);
  const std::vector<Value> nodes = parser.Sequence("", 0);
  if (nodes.size() != 1) parser.Fail("not exactly one object");
  FreeObject object{{}, nodes[0].is_dict, parser.keyword};
  if (object.is_dict) {
    Flatten(parser, nodes[0], "", object.dict);
  } else {
    object.dict.entries.push_back(nodes[0].entry);
  }
  return object;
}

}  // namespace golden
