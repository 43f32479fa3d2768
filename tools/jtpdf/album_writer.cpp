#include "album_writer.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "formats/decoder.h"
#include "input_problem.h"
#include "optimisation.h"
#include "ordered_work.h"
#include "pdf_document.h"
#include "text.h"

namespace pictures::tool {
namespace {

// About the memory an encoded page holds until it is written.
uint64_t WeightOf(const PagePlan& page) {
  // With what goes beside the bytes that pass through: a soft mask. A TIFF page has none: its
  // memory is for one that turns out to be damaged.
  if (page.image.PassesThrough()) {
    const uint64_t beside = page.image.format == Format::kTiff ? 0 : page.image.memory;
    return page.image.profileSize + page.image.size + beside;
  }
  return page.image.profileSize +
         uint64_t{page.image.width} * page.image.height *
             static_cast<uint64_t>(Channels(page.image.colour) + (page.image.alpha ? 1 : 0)) *
             static_cast<uint64_t>(std::max(page.image.depth, 8) / 8);
}

// An image ready to write, with the bytes that it may be a view of; or why there is none.
struct Product {
  ImageSource source;
  EncodedImage image;
  std::exception_ptr problem;
};

Product EncodePage(const AlbumPlan& plan, const PagePlan& page, const Options& options) {
  Product product;
  product.problem = ProblemOf([&] {
    // Of a file with many pages each takes a small part.
    const bool touch = page.image.PassesThrough() && page.image.pages == 1;
    product.source = OpenInput(plan, page.input, touch);
    UseUnchanged(product.source, [&] {
      product.image = options.optimize
                          ? EncodeSmallest(page.image, product.source.View(), options.limits)
                          : Encode(page.image, product.source.View(), options.compression);
    });
    if (!page.image.PassesThrough()) product.source = {};
  });
  return product;
}

class AlbumWriter {
 public:
  AlbumWriter(const AlbumPlan& plan, const Options& options, Output& output, Console& console)
      : plan_(plan),
        options_(options),
        console_(console),
        document_(output, options.metadata, options.compression),
        numbers_(plan.pages.size(), 0) {
    document_.SetViewer(options.viewer);
    if (options.layout.grid.Cells() > 1) document_.CompressContents();
  }

  // Gives how many pages failed.
  size_t WritePages() {
    constexpr WorkBounds kBounds{uint64_t{8} << 20, 256};
    RunInOrder<Product>(
        plan_.pages.size(), options_.jobs, kBounds,
        [&](size_t i) { return IsFirst(i) ? WeightOf(plan_.pages[i]) : 0; },
        [&](size_t i) {
          return IsFirst(i) ? EncodePage(plan_, plan_.pages[i], options_) : Product{};
        },
        [&](size_t i, const Product& product) { WritePage(i, product); });
    console_.EndProgress();
    return failed_;
  }
  void Finish() { document_.Finish(); }

 private:
  bool IsFirst(size_t i) const { return plan_.pages[i].sameAs == i; }

  void WritePage(size_t i, const Product& product) {
    const PagePlan& page = plan_.pages[i];
    if (product.problem) {
      console_.Error(PageName(plan_, page), Reason(product.problem));
      if (!options_.skipBad) throw BadInput();
      ++failed_;
      FinishSheet(i);
      return;
    }
    for (const auto* notes : {&page.image.notes, &product.image.notes}) {
      for (const Note& note : *notes) console_.Say(PageName(plan_, page), note);
    }
    if (IsFirst(i)) {
      numbers_[i] = WriteImage(page, product);
    } else {
      numbers_[i] = numbers_[page.sameAs];
      if (numbers_[i] == 0) {
        console_.Error(PageName(plan_, page), "holds the same damaged picture as " +
                                                  PageName(plan_, plan_.pages[page.sameAs]));
        ++failed_;
        FinishSheet(i);
        return;
      }
    }
    Bookmark(page);
    document_.Draw(numbers_[i], page.layout);
    drawn_ = true;
    FinishSheet(i);
    bytes_ += product.image.pixels.Size();
    console_.Progress(i + 1, plan_.pages.size(), bytes_);
  }

  // Behind the last picture of a page: adds it, unless all of them failed.
  void FinishSheet(size_t i) {
    const bool last =
        i + 1 == plan_.pages.size() || plan_.pages[i + 1].sheet != plan_.pages[i].sheet;
    if (!last || !drawn_) return;
    document_.AddPage(plan_.pages[i].layout);
    drawn_ = false;
  }

  // In front of the first picture of an input that is drawn.
  void Bookmark(const PagePlan& page) {
    if (!options_.bookmarks || page.input == marked_) return;
    const Input& input = plan_.inputs[page.input];
    if (!input.chapter.empty() && input.chapter != chapter_)
      document_.AddBookmark(0, input.chapter);
    chapter_ = input.chapter;
    std::string title = input.title;
    if (title.empty()) {
      title = BaseName(input.standardInput ? "standard input" : input.path);
      const size_t dot = title.rfind('.');
      if (dot != 0 && dot != std::string::npos) title.resize(dot);
    }
    document_.AddBookmark(chapter_.empty() ? 0 : 1, title);
    marked_ = page.input;
  }

  int WriteImage(const PagePlan& page, const Product& product) {
    try {
      const int number = document_.WriteImage(product.image, options_.role, RecordedName(page));
      product.source.CheckUnchanged();
      return number;
    } catch (const ImageError& error) {  // and a part of it is in the PDF
      console_.Error(PageName(plan_, page), error.what());
      throw BadInput();
    }
  }

  std::wstring RecordedName(const PagePlan& page) const {
    const Input& input = plan_.inputs[page.input];
    if (!options_.recordNames || input.standardInput) return {};
    return FromUtf8Lenient(BaseName(input.path));
  }

  const AlbumPlan& plan_;
  const Options& options_;
  Console& console_;
  PdfDocument document_;
  std::vector<int> numbers_;  // the image of each page; 0 for one that failed
  uint64_t bytes_ = 0;
  bool drawn_ = false;                   // something on the page at hand
  size_t marked_ = plan_.inputs.size();  // the last input that has its bookmark; at first none
  std::string chapter_;                  // above it
  size_t failed_ = 0;
};

// The bytes that will be in the PDF whatever the other images compress to.
uint64_t KnownBytes(const AlbumPlan& plan) {
  uint64_t known = 0;
  for (size_t i = 0; i < plan.pages.size(); ++i) {
    const PagePlan& page = plan.pages[i];
    if (page.sameAs == i && page.image.PassesThrough()) known += page.image.size;
  }
  return known;
}

}  // namespace

size_t WriteAlbum(const AlbumPlan& plan, const Options& options, Output& output, Console& console) {
  output.CheckRoom(KnownBytes(plan));
  AlbumWriter writer(plan, options, output, console);
  const size_t failed = writer.WritePages();
  if (failed == plan.pages.size()) {
    throw OutputError("was not written: no input is left that could be used");
  }
  writer.Finish();
  output.Commit();
  return failed;
}

}  // namespace pictures::tool
