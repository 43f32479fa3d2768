// The file from its first byte to its last, in the order in which it is written:
//
//     %PDF-1.5, the marker line, object 1 (the graphics state),
//     images, profiles with their colour spaces, forms and page contents in any order,
//     and among them what the host wrote itself,
//     pages, page-tree nodes from the lowest level up, outline, catalog, information dictionary,
//     cross-reference table, trailer, end-of-file marker, closing text

#include "pdf_structure.h"

#include <sstream>
#include <utility>
#include <vector>

#include "byte_reader.h"
#include "dict_reader.h"
#include "free_reader.h"
#include "outline_checker.h"

namespace golden {
namespace {

constexpr std::string_view kHeader = "%PDF-1.5\r\n%\xE2\xE3\xCD\xD3\r\n";
constexpr std::string_view kGraphicsState =
    "<<\r\n/AIS false\r\n/BM /Normal\r\n/ca 1.0\r\n/CA 1.0\r\n/OP false\r\n/op false\r\n/OPM 1\r\n"
    "/SA true\r\n/SMask /None\r\n/Type /ExtGState\r\n>>\r\nendobj\r\n";
constexpr std::string_view kPaintsForm = "q 1 0 0 1 0 0 cm /Fm";
constexpr std::uint64_t kFanOut = 10;
constexpr std::uint64_t kMostReserved = 1'000'000;  // without any of them written

enum Kind : unsigned char {
  kFreeHead,
  kGraphics,
  kImage,
  kProfile,
  kColorSpace,
  kForm,
  kContents,
  kOpen,
  kPage,
  kNode,
  kOutline,
  kCatalog,
  kInfo
};

constexpr const char* kKindNames[] = {"the free-list head",
                                      "a graphics state",
                                      "an image",
                                      "a profile",
                                      "a colour space",
                                      "a form",
                                      "a page's contents",
                                      "an object of the host's",
                                      "a page",
                                      "a page-tree node",
                                      "an outline",
                                      "a catalog",
                                      "an information dictionary"};

struct Object {
  std::uint64_t offset;
  // A page: its /Parent. A node: its index in nodes_. Contents: the form that they paint.
  std::uint32_t link;
  Kind kind;
};

struct Node {
  std::uint64_t offset;
  std::uint64_t count;   // as claimed
  std::uint64_t leaves;  // as they are
  std::uint64_t full;    // what it holds at most
  std::uint32_t parent;  // 0 in the root
  std::uint32_t kids;
};

class Checker {
 public:
  Checker(std::istream& in, const StructureOptions& options, StructureReport& report)
      : in_(in), options_(options), report_(report) {}

  void Run() {
    in_.Expect(kHeader, "the header and the marker line");
    objects_.push_back({0, 0, kFreeHead});
    while (in_.Peek() >= '0' && in_.Peek() <= '9') ReadObject();
    PageTree();
    OpenObjects();
    CrossReferences();
    Trailer();
    Report();
  }

  std::uint64_t Position() const { return in_.Position(); }

 private:
  std::int64_t Current() const { return static_cast<std::int64_t>(current_); }
  Object& This() { return objects_[current_]; }
  Kind KindHere() const { return objects_[current_].kind; }

  [[noreturn]] void Fail(const std::string& what) const { FailAt(objects_[current_].offset, what); }
  [[noreturn]] void FailAt(std::uint64_t offset, const std::string& what) const {
    throw StructureError(offset, "object " + std::to_string(Current()) + ": " + what);
  }

  void ReadObject() {
    const std::uint64_t offset = in_.Position();
    const std::uint64_t number = in_.Number("an object number");
    in_.Expect(" 0 obj\r\n", "object " + std::to_string(number));
    Begin(number, offset);
    if (number == 1) {
      in_.Expect(kGraphicsState, "the graphics state");
    } else if (options_.open_objects) {
      ReadOpenObject();
    } else if (in_.Peek() == '[') {
      ReadColorSpace();
    } else {
      ReadDictObject();
    }
    previous_ = KindHere();
  }

  // Numbers follow one another, but for those that a host had reserved and those behind them.
  void Begin(std::uint64_t number, std::uint64_t offset) {
    const bool free = options_.open_objects && number > 1 && objects_.size() > 1 &&
                      (number < objects_.size() ? objects_[number].offset == 0
                                                : number - objects_.size() < kMostReserved);
    if (number != objects_.size() && !free) {
      throw StructureError(offset, "object " + std::to_string(number) + " stands where object " +
                                       std::to_string(objects_.size()) + " belongs");
    }
    if (number >= objects_.size()) objects_.resize(number + 1, {0, 0, kFreeHead});
    current_ = number;
    This() = {offset, 0, kGraphics};
  }

  // [ /ICCBased 5 0 R ], right behind the profile 5.
  void ReadColorSpace() {
    SetKind(kColorSpace);
    in_.Expect("[ /ICCBased ", "a colour space");
    if (in_.Number("the colour space's profile") != current_ - 1) {
      Fail("a colour space names the profile before it");
    }
    in_.Expect(" 0 R ]\r\nendobj\r\n", "a colour space");
  }

  void ReadDictObject() {
    in_.Expect("<<\r\n", "object " + std::to_string(Current()));
    const Dict dict = ReadDict(in_);
    SetKind(KindOf(dict));
    References(dict);
    const Kind kind = KindHere();
    if (in_.Peek() == 's') {
      if (kind >= kPage) Fail(std::string(kKindNames[kind]) + " with a stream");
      in_.Expect("stream\r\n", "object " + std::to_string(Current()));
      ReadStream(dict, kind == kImage || kind == kProfile);
    } else if (kind < kPage) {
      Fail(std::string(kKindNames[kind]) + " without a stream");
    }
    in_.Expect("endobj\r\n", "the end of object " + std::to_string(Current()));
    CheckKind(dict);
  }

  // Any object, which may yet be one of the library's, with entries of the host's or without.
  void ReadOpenObject() {
    const FreeObject object = ReadFreeObject(in_);
    in_.Expect("\r\n", "the line behind " + object.keyword);
    Kind kind = object.is_dict ? KindOf(object.dict) : kOpen;
    if (previous_ == kProfile) {
      const std::vector<std::int64_t>& named = object.dict.entries[0].references;
      if (object.is_dict || named != std::vector{Current() - 1}) {
        Fail("a colour space names the profile before it");
      }
      kind = kColorSpace;
    }
    const bool streams = object.keyword == "stream";
    if (!streams && kind >= kImage && kind <= kContents && kind != kColorSpace) kind = kOpen;
    This().kind = kind;
    if (streams) {
      ReadStream(object.dict, kind == kImage || kind == kProfile);
      in_.Expect("endobj\r\n", "the end of object " + std::to_string(Current()));
    }
    SetKind(KindHere());
    References(object.dict);
    CheckKind(object.dict);
  }

  void CheckKind(const Dict& dict) {
    switch (KindHere()) {
      case kImage:
        return CheckImage(dict);
      case kForm:
        return CheckForm(dict);
      case kOpen:
        return CountOpen(dict);
      case kPage:
        return CheckPage(dict);
      case kNode:
        return CheckNode(dict);
      case kOutline:
        return outline_.Add(Current(), dict, This().offset);
      case kCatalog:
        return CheckCatalog(dict);
      default:
        return;
    }
  }

  void CountOpen(const Dict& dict) {
    ++report_.open_objects;
    if (dict.Text("/Subtype", DictEntry::kName) == "/Image") ++report_.images;
  }

  Kind KindOf(const Dict& dict) const {
    const std::string type = dict.Text("/Type", DictEntry::kName);
    const std::string subtype = dict.Text("/Subtype", DictEntry::kName);
    if (type == "/XObject" && subtype == "/Image") return kImage;
    if (type == "/XObject" && subtype == "/Form" &&
        (!options_.open_objects || dict.Find("/Resources/ExtGState/GS0") != nullptr)) {
      return kForm;
    }
    if (type == "/Page") return kPage;
    if (type == "/Pages") return kNode;
    if (type == "/Catalog") return kCatalog;
    if (dict.Find("/Producer") != nullptr && dict.Find("/MGmk") != nullptr) return kInfo;
    if (dict.Text("/Alternate", DictEntry::kName) == "/DeviceRGB" &&
        dict.Text("/N", DictEntry::kNumber) == "3") {
      return kProfile;
    }
    if (dict.entries.size() == 1 && dict.entries[0].path == "/Length") return kContents;
    if (options_.open_objects) {
      const bool begins = type == "/Outlines" && previous_ == kNode;
      return begins || previous_ == kOutline ? kOutline : kOpen;
    }
    Fail("a dictionary of no kind that is written");
  }

  // Kinds come in a fixed order, all that a host writes between being one step of it.
  void SetKind(Kind kind) {
    const auto step = [](Kind k) { return k >= kImage && k <= kOpen ? kImage : k; };
    const bool tail_misplaced = (kind == kInfo && previous_ != kCatalog) ||
                                (kind == kCatalog && previous_ != kNode && previous_ != kOutline);
    This().kind = kind;
    if (step(kind) < step(previous_) || (previous_ == kProfile) != (kind == kColorSpace) ||
        tail_misplaced) {
      Fail(std::string(kKindNames[kind]) + " behind " + kKindNames[previous_]);
    }
  }

  // Every reference that the library writes is one of these, and all but /Parent look back.
  void References(const Dict& dict) {
    for (const DictEntry& entry : dict.entries) {
      for (const std::int64_t number : entry.references) {
        const std::string& path = entry.path;
        if (KindHere() == kOpen || KindHere() == kOutline || KindHere() == kColorSpace) {
          named_.push_back({number, entry.offset});
        } else if (path == "/Parent") {
          if (number <= Current()) FailAt(entry.offset, "a parent stands behind its kids");
        } else if (path == "/Contents") {
          Names(entry, number, kContents);
        } else if (path == "/Pages") {
          Names(entry, number, kNode);
        } else if (path == "/Outlines" && !outline_.IsEmpty()) {
          Names(entry, number, kOutline);
        } else if (path == "/Resources/ExtGState/GS0") {
          Names(entry, number, kGraphics);
        } else if (path == "/SMask") {
          Names(entry, number, kImage);
        } else if (path == "/ColorSpace") {
          if (!options_.unchecked_numbers) Names(entry, number, kColorSpace);
        } else if (path == "/Resources/XObject/Im" + std::to_string(number)) {
          if (!options_.unchecked_numbers) Names(entry, number, kImage);
        } else if (path == "/Resources/XObject/Fm" + std::to_string(number)) {
          if (!options_.unchecked_numbers) Names(entry, number, kForm);
        } else if (options_.open_objects) {
          named_.push_back({number, entry.offset});
        } else if (path != "/Kids" || KindHere() != kNode) {
          FailAt(entry.offset, "a reference that is not written: " + path);
        }
      }
    }
  }

  void Names(const DictEntry& entry, std::int64_t number, Kind kind) const {
    if (number < 1 || static_cast<std::uint64_t>(number) >= objects_.size() ||
        (number >= Current() && !options_.open_objects)) {
      FailAt(entry.offset,
             entry.path + " names object " + std::to_string(number) + ", which is not there yet");
    }
    const Kind found = objects_[static_cast<std::size_t>(number)].kind;
    if (found != kind && found != kOpen) {
      FailAt(entry.offset,
             entry.path + " names " + kKindNames[found] + ", not " + kKindNames[kind]);
    }
  }

  // Image data and profiles end directly with "endstream", every other stream with a line end
  // before it, and an empty one with nothing between the two lines.
  void ReadStream(const Dict& dict, bool raw) {
    const DictEntry* length = dict.entries.empty() ? nullptr : &dict.entries.back();
    if (length == nullptr || length->path != "/Length" || length->kind != DictEntry::kNumber ||
        length->text.find_first_not_of("0123456789") != std::string::npos ||
        length->text.size() > 18) {
      Fail("the last entry before a stream is its /Length");
    }
    const std::uint64_t size = std::stoull(length->text);
    const std::uint64_t start = in_.Position();
    std::string head;
    while (head.size() < size && head.size() < 100 && in_.Peek() >= 0) {
      head += static_cast<char>(in_.Get());
    }
    if (!in_.Skip(size - head.size())) FailAt(start, "the file ends inside the stream");
    if (options_.open_objects) raw = IsLibrarys(head, raw);
    in_.Expect(raw || (size == 0 && KindHere() != kOpen) ? "endstream\r\n" : "\r\nendstream\r\n",
               "object " + std::to_string(Current()) + ": behind /Length bytes of stream");
    if (KindHere() == kContents) CheckContents(head, start);
    const bool encoded = options_.open_objects && dict.Find("/Filter") != nullptr;
    if (KindHere() == kForm && !encoded &&
        !("\r\n" + head + "\r\n").starts_with("\r\n/GS0 gs\r\n")) {
      FailAt(start, "a form's content begins with the graphics state");
    }
  }

  // A host's image or profile has a line end behind its data, and its stream without entries is no
  // page's contents.
  bool IsLibrarys(const std::string& head, bool raw) {
    if ((raw && in_.Peek() == '\r') ||
        (KindHere() == kContents && !head.starts_with(kPaintsForm))) {
      This().kind = kOpen;
      return false;
    }
    return raw;
  }

  void CheckContents(const std::string& text, std::uint64_t offset) {
    constexpr std::string_view kBefore = kPaintsForm;
    constexpr std::string_view kBehind = " Do Q";
    const bool framed = text.starts_with(kBefore) && text.ends_with(kBehind) &&
                        text.size() > kBefore.size() + kBehind.size();
    if (!framed) FailAt(offset, "a page's contents paint one form");
    const std::string form =
        text.substr(kBefore.size(), text.size() - kBefore.size() - kBehind.size());
    form_names_.push_back(form);
    contents_.push_back(Current());
  }

  void CheckImage(const Dict& dict) {
    for (const char* key : {"/BitsPerComponent", "/Height", "/Width"}) {
      if (dict.Text(key, DictEntry::kNumber).empty()) Fail(std::string("an image without ") + key);
    }
    if (dict.Text("/Intent", DictEntry::kName) != "/RelativeColorimetric" ||
        dict.Text("/JTImageType", DictEntry::kName).empty() ||
        dict.Text("/JTImageName", DictEntry::kString).empty()) {
      Fail("an image without its intent, role or name");
    }
    const bool jpx = dict.Text("/Filter", DictEntry::kName) == "/JPXDecode";
    if (jpx != (dict.Text("/SMaskInData", DictEntry::kNumber) == "1")) {
      Fail("/SMaskInData belongs to JPEG 2000 data");
    }
    ++report_.images;
  }

  void CheckBox(const Dict& dict, const std::string& key) const {
    const DictEntry* box = dict.Find(key);
    if (box == nullptr || box->kind != DictEntry::kArray || box->items != 4 ||
        !box->references.empty()) {
      Fail(key + " is four numbers");
    }
  }

  void CheckForm(const Dict& dict) {
    CheckBox(dict, "/BBox");
    if (dict.Text("/FormType", DictEntry::kNumber) != "1" ||
        dict.Find("/Resources/ExtGState/GS0") == nullptr) {
      Fail("a form without its type or its graphics state");
    }
    ++report_.forms;
  }

  // Page i of the tree is page i of the host: its contents are the i-th that were written.
  void CheckPage(const Dict& dict) {
    CheckBox(dict, "/MediaBox");
    CheckBox(dict, "/CropBox");
    const DictEntry* contents = dict.Find("/Contents");
    if (contents == nullptr || contents->references.size() != 1) Fail("a page without /Contents");
    if (report_.pages >= contents_.size() || contents->references[0] != contents_[report_.pages]) {
      FailAt(contents->offset, "pages stand in the order of their contents");
    }
    const std::string form = "/Resources/XObject/Fm" + form_names_[report_.pages];
    if (dict.Text(form, DictEntry::kReference).empty()) {
      Fail("a page whose contents paint a form that its resources do not name");
    }
    if (dict.Text("/Group/S", DictEntry::kName) != "/Transparency" ||
        (!options_.open_objects && dict.entries.back().path != "/Group/S")) {
      Fail("a page without its transparency group");
    }
    const DictEntry* parent = dict.Find("/Parent");
    if (parent == nullptr || parent->references.size() != 1) Fail("a page without /Parent");
    This().link = static_cast<std::uint32_t>(parent->references[0]);
    if (report_.pages++ == 0) next_kid_ = Current();
  }

  void CheckNode(const Dict& dict) {
    Node node{This().offset, 0, 0, 0, 0, 0};
    const std::string count = dict.Text("/Count", DictEntry::kNumber);
    const DictEntry* kids = dict.Find("/Kids");
    if (count.empty() || count.size() > 10 ||
        count.find_first_not_of("0123456789") != std::string::npos || kids == nullptr ||
        kids->kind != DictEntry::kArray || kids->items != kids->references.size()) {
      Fail("a page-tree node has a /Count and references as /Kids");
    }
    node.count = std::stoull(count);
    node.kids = static_cast<std::uint32_t>(kids->items);
    if (node.kids > kFanOut) FailAt(kids->offset, "a page-tree node with more than ten kids");
    if ((kids->text == "]") != (node.kids == 0)) FailAt(kids->offset, "no kids are written as ]");
    for (const std::int64_t number : kids->references) AddKid(node, number, kids->offset);
    if (const DictEntry* parent = dict.Find("/Parent")) {
      if (parent->references.size() != 1) Fail("/Parent is a reference");
      if (node.kids == 0) Fail("a page-tree node without kids");
      node.parent = static_cast<std::uint32_t>(parent->references[0]);
    }
    if (!nodes_.empty() && nodes_.back().parent == 0) Fail("a node behind the page-tree root");
    This().link = static_cast<std::uint32_t>(nodes_.size());
    nodes_.push_back(node);
  }

  // Nodes take the pages, and then the nodes, in the order in which these stand: so each has one
  // parent, and the pages keep their order.
  void AddKid(Node& node, std::int64_t number, std::uint64_t offset) {
    if (number != next_kid_ || number >= Current()) {
      FailAt(offset, "/Kids names object " + std::to_string(number) + ", the next is object " +
                         std::to_string(next_kid_));
    }
    ++next_kid_;
    const Object& kid = objects_[static_cast<std::size_t>(number)];
    const bool leaf = kid.kind == kPage;
    const std::uint32_t parent = leaf ? kid.link : nodes_[kid.link].parent;
    if (parent != Current()) {
      FailAt(offset, "object " + std::to_string(number) + " is a kid here, but its /Parent is " +
                         std::to_string(parent));
    }
    const std::uint64_t below = leaf ? 1 : nodes_[kid.link].full;
    if (node.full != 0 && node.full != kFanOut * below) {
      FailAt(offset, "kids of two levels under one node");
    }
    node.full = kFanOut * below;
    node.leaves += leaf ? 1 : nodes_[kid.link].leaves;
  }

  void CheckCatalog(const Dict& dict) const {
    const DictEntry* pages = dict.Find("/Pages");
    const std::int64_t behind = outline_.Objects();
    if ((dict.entries.size() != 2 && !options_.open_objects) || pages == nullptr ||
        pages->references.size() != 1 || pages->references[0] != Current() - 1 - behind ||
        (behind != 0) != (dict.Find("/Outlines") != nullptr)) {
      Fail("the catalog has the page-tree root before it as /Pages");
    }
  }

  // The root counts all pages; below it a node with ten kids claims all that it could hold, and
  // one with fewer claims what is left over.
  void PageTree() {
    if (KindHere() != kInfo) Fail("the last object is the information dictionary");
    const Node& root = nodes_.back();
    if (root.parent != 0) Fail("the page tree has no root");
    if (report_.pages != 0 && next_kid_ != Current() - 2 - outline_.Objects())
      Fail("a page or node without a parent");
    if (contents_.size() != report_.pages) Fail("contents without a page");
    for (const Node& node : nodes_) {
      const std::uint64_t count = node.parent == 0       ? node.leaves
                                  : node.kids == kFanOut ? node.full
                                                         : report_.pages % node.full;
      if (node.count != count) {
        throw StructureError(node.offset, "/Count " + std::to_string(node.count) +
                                              " in a node that is to claim " +
                                              std::to_string(count));
      }
      if (node.count != node.leaves) ++report_.generous_nodes;
    }
    if (root.leaves != report_.pages) Fail("the root does not count every page");
  }

  void CrossReferences() {
    table_ = in_.Position();
    const std::string size = std::to_string(objects_.size());
    in_.Expect("xref\r\n0 " + size + "\r\n", "the head of the cross-reference table");
    in_.Expect("0000000000 65535 f\r\n", "the free-list head");
    for (std::size_t i = 1; i < objects_.size(); ++i) {
      if (objects_[i].offset == 0) Fail("object " + std::to_string(i) + " is not there");
      std::string digits = std::to_string(objects_[i].offset);
      if (digits.size() < 10) digits.insert(0, 10 - digits.size(), '0');
      in_.Expect(digits + " 00000 n\r\n", "the entry of object " + std::to_string(i));
    }
  }

  void Trailer() {
    const auto number = [](std::uint64_t n) { return std::to_string(n); };
    in_.Expect("trailer\r\n<<\r\n/Size " + number(objects_.size()) + "\r\n", "the trailer's size");
    in_.Expect("/Root " + number(Current() - 1) + " 0 R\r\n", "the trailer's root");
    in_.Expect("/Info " + number(Current()) + " 0 R\r\n>>\r\n", "the trailer's information");
    in_.Expect("startxref\r\n" + number(table_) + "\r\n", "the table's position");
    in_.Expect("%%EOF\r\n", "the end-of-file marker");
    const std::uint64_t end = in_.Position();
    int last[2] = {'\r', '\n'};
    while (in_.Peek() >= 0) {
      if (!options_.closing_text) throw StructureError(end, "bytes behind the end-of-file marker");
      last[0] = last[1];
      last[1] = in_.Get();
    }
    if (last[0] != '\r' || last[1] != '\n') {
      throw StructureError(in_.Position(), "the closing text does not end its line");
    }
    report_.closing_bytes = in_.Position() - end;
  }

  // What a host names may come later; it has to come.
  void OpenObjects() {
    for (const auto& [number, offset] : named_) {
      if (number >= 1 && static_cast<std::uint64_t>(number) < objects_.size()) continue;
      if (options_.unchecked_numbers) continue;
      FailAt(offset, "a reference to object " + std::to_string(number) + ", which is not there");
    }
    outline_.Check([this](std::int64_t number) {
      return number > 0 && objects_[static_cast<std::size_t>(number)].kind == kPage;
    });
  }

  void Report() {
    report_.bookmarks = outline_.Bookmarks();
    report_.objects = objects_.size() - 1;
    report_.page_nodes = nodes_.size();
    for (const Object& object : objects_) report_.profiles += object.kind == kProfile ? 1 : 0;
  }

  ByteReader in_;
  const StructureOptions& options_;
  StructureReport& report_;
  std::vector<Object> objects_;
  std::uint64_t current_ = 0;  // the object that is read
  Kind previous_ = kFreeHead;  // of the one that stands before it
  std::vector<Node> nodes_;
  OutlineChecker outline_;
  std::vector<std::pair<std::int64_t, std::uint64_t>> named_;  // by the host, and where
  std::vector<std::int64_t> contents_;                         // a page each
  std::vector<std::string> form_names_;                        // the digits behind /Fm, a page each
  std::int64_t next_kid_ = 0;
  std::uint64_t table_ = 0;
};

}  // namespace

StructureReport CheckStructure(std::istream& in, const StructureOptions& options) {
  StructureReport report;
  Checker checker(in, options, report);
  try {
    checker.Run();
  } catch (const StructureError& error) {
    report.error = error.what();
    report.offset = error.offset;
  }
  report.size = checker.Position();
  return report;
}

StructureReport CheckStructure(std::string_view bytes, const StructureOptions& options) {
  std::istringstream in{std::string(bytes)};
  return CheckStructure(in, options);
}

}  // namespace golden
