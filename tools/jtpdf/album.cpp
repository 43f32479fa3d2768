#include "album.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <iterator>
#include <new>
#include <utility>

#include "duplicates.h"
#include "ordered_work.h"
#include "pdf_document.h"
#include "readers/reader.h"
#include "text.h"

namespace tool {
namespace {

// Does the work; what makes the input unusable is given as it was thrown. Workers that ran out of
// memory have none for a message either: Reason makes it when they are done.
template <class Work>
std::exception_ptr ProblemOf(const Work& work) {
  try {
    work();
  } catch (const ImageError&) {
    return std::current_exception();
  } catch (const std::bad_alloc&) {
    return std::current_exception();
  }
  return nullptr;
}

std::string Reason(const std::exception_ptr& problem) {
  try {
    std::rethrow_exception(problem);
  } catch (const ImageError& error) {
    return error.what();
  } catch (const std::bad_alloc&) {
    return "needs more memory than there is; scale it down, or try with fewer jobs (-j 1)";
  }
}

// Small files are kept from their planning to their writing, as many as fit in here, which is less
// than one photograph takes when it is decoded: opening a small file is most of the work on it.
constexpr size_t kMostHeld = size_t{16} << 20;

struct PlannedInput {
  Input input;
  bool folder = false;
  std::exception_ptr problem;
  std::vector<ImagePlan> images;
  std::vector<PageLayout> layouts;
  uint64_t sampleHash = 0;
  FileIdentity identity;
  ImageSource held;  // what can be read only once, or was kept
};

// Works on the bytes of an input. Where it changed meanwhile neither result nor error counts.
template <class Work>
void UseUnchanged(const ImageSource& source, const Work& work) {
  try {
    work();
  } catch (const ImageError&) {
    source.CheckUnchanged();
    throw;
  }
  source.CheckUnchanged();
}

const Reader& RecogniseOrThrow(Bytes head) {
  const Reader* reader = Recognise(head);
  if (reader == nullptr) {
    throw ImageError(
        "is no picture of a known kind; convert it to JPEG, JPEG 2000, PNG, TIFF or WebP");
  }
  return *reader;
}

// A page that does not fit fails alone, but for the only one: then it is the file that fails.
void LayOutPages(const Options& options, PlannedInput* planned) {
  for (ImagePlan& image : planned->images) {
    planned->layouts.emplace_back();
    if (!image.error.empty()) continue;
    try {
      planned->layouts.back() = LayOut(image, options.layout);
    } catch (const ImageError& error) {
      image.error = error.what();
    }
  }
  if (planned->images.size() == 1 && !planned->images[0].error.empty()) {
    throw ImageError(planned->images[0].error);
  }
}

void PlanInput(const Options& options, std::atomic<size_t>* heldBytes, PlannedInput* planned) {
  const Input& input = planned->input;
  const PipeRules rules{options.maxInput, [](Bytes head) { RecogniseOrThrow(head); }};
  ImageSource source = input.standardInput ? ImageSource::Read(0, rules)
                                           : ImageSource::Open(input.path, false, rules);
  const Bytes file = source.View();
  UseUnchanged(source, [&] {
    const Reader& reader = RecogniseOrThrow(file.first(std::min(file.size(), kRecognisedBytes)));
    planned->images = reader.plan(file, options.limits);
    LayOutPages(options, planned);
    planned->sampleHash = SampleHash(file);
  });
  planned->identity = source.Identity();
  const bool keep =
      !source.CanReopen() || (!source.IsMapped() && heldBytes->fetch_add(file.size()) <= kMostHeld);
  if (keep) planned->held = std::move(source);
}

// Plans all inputs, and in the place of folders the pictures in them.
std::vector<PlannedInput> PlanInputs(std::vector<Input> inputs, const Options& options,
                                     std::atomic<size_t>* heldBytes,
                                     std::vector<PassedOver>* passedOver) {
  std::vector<PlannedInput> planned(inputs.size());
  ForEachInParallel(inputs.size(), options.jobs, [&](size_t i) {
    PlannedInput& one = planned[i];
    one.input = std::move(inputs[i]);
    if (!one.input.error.empty()) return;
    one.problem = ProblemOf([&] {
      try {
        PlanInput(options, heldBytes, &one);
      } catch (const IsFolder&) {
        one.folder = true;
        throw;
      }
    });
  });
  for (PlannedInput& one : planned) {
    if (!one.problem) continue;
    one.input.error = Reason(one.problem);
    one.images.clear();
  }
  if (std::none_of(planned.begin(), planned.end(), [](const auto& one) { return one.folder; })) {
    return planned;
  }
  std::vector<PlannedInput> opened;
  for (PlannedInput& one : planned) {
    if (!one.folder) {
      opened.push_back(std::move(one));
      continue;
    }
    Folder folder = ListFolder(one.input.path);
    std::move(folder.passedOver.begin(), folder.passedOver.end(), std::back_inserter(*passedOver));
    for (PlannedInput& inside :
         PlanInputs(std::move(folder.inputs), options, heldBytes, passedOver)) {
      inside.folder = false;
      opened.push_back(std::move(inside));
    }
  }
  return opened;
}

ImageSource OpenInput(const AlbumPlan& plan, size_t input, bool touch) {
  if (!plan.held[input].View().empty()) return plan.held[input].Again();
  ImageSource source = ImageSource::Open(plan.inputs[input].path, touch);
  if (source.Identity() != plan.identities[input]) throw InputChanged();
  return source;
}

// Two pages of one image: of the same bytes, and the same page in them.
void FindDuplicates(const std::vector<PlannedInput>& planned, const std::vector<size_t>& firstPages,
                    AlbumPlan* plan) {
  DuplicateFinder finder([&](size_t input) { return OpenInput(*plan, input, false); });
  for (size_t input = 0; input < planned.size(); ++input) {
    const size_t pages = firstPages[input + 1] - firstPages[input];
    if (pages == 0) continue;
    size_t first = input;
    try {
      first = finder.FirstLike(input, planned[input].sampleHash, planned[input].identity);
    } catch (const ImageError&) {
      // It vanished between two looks; writing it will say so.
    }
    if (first == input) continue;
    for (size_t i = 0; i < pages; ++i) {
      plan->pages[firstPages[input] + i].sameAs = firstPages[first] + i;
    }
  }
}

// About the memory an encoded page holds until it is written.
uint64_t WeightOf(const PagePlan& page) {
  if (page.image.PassesThrough()) return page.image.profileSize + page.image.size;
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
    product.source = OpenInput(plan, page.input, page.image.PassesThrough());
    UseUnchanged(product.source, [&] {
      product.image = Encode(page.image, product.source.View(), options.compression);
    });
    if (!page.image.PassesThrough()) product.source = {};
  });
  return product;
}

std::string PageName(const Input& input, const ImagePlan& image) {
  return input.Name() + (image.pages > 1 ? ", page " + std::to_string(image.page) : "");
}

std::string PageName(const AlbumPlan& plan, const PagePlan& page) {
  return PageName(plan.inputs[page.input], page.image);
}

std::wstring ImageName(const AlbumPlan& plan, const PagePlan& page, bool recorded) {
  const Input& input = plan.inputs[page.input];
  return !recorded || input.standardInput ? std::wstring() : FromUtf8Lenient(BaseName(input.path));
}

const char* ColourName(const ImagePlan& image) {
  if (image.palette) return image.alpha ? "palette+alpha" : "palette";
  switch (image.colour) {
    case Colour::kGrey:
      return image.alpha ? "grey+alpha" : "grey";
    case Colour::kRgb:
      return image.alpha ? "RGB+alpha" : "RGB";
    default:
      return image.alpha ? "CMYK+alpha" : "CMYK";
  }
}

const char* ProfileName(ProfileUse use) {
  switch (use) {
    case ProfileUse::kNone:
      return "none";
    case ProfileUse::kUsed:
      return "used";
    default:
      return "left out";
  }
}

}  // namespace

AlbumPlan PlanAlbum(std::vector<Input> inputs, const Options& options) {
  AlbumPlan plan;
  std::atomic<size_t> heldBytes = 0;
  std::vector<PlannedInput> planned =
      PlanInputs(std::move(inputs), options, &heldBytes, &plan.passedOver);
  std::vector<size_t> firstPages;  // of each input, and behind the last
  firstPages.reserve(planned.size() + 1);
  plan.inputs.reserve(planned.size());
  plan.held.reserve(planned.size());
  plan.identities.reserve(planned.size());
  plan.pages.reserve(planned.size());
  for (size_t i = 0; i < planned.size(); ++i) {
    PlannedInput& one = planned[i];
    firstPages.push_back(plan.pages.size());
    if (!one.input.error.empty()) plan.failures.push_back({one.input.Name(), one.input.error});
    for (size_t k = 0; k < one.images.size(); ++k) {
      ImagePlan& image = one.images[k];
      if (image.error.empty()) {
        plan.pages.push_back({i, std::move(image), one.layouts[k], plan.pages.size()});
      } else {
        plan.failures.push_back({PageName(one.input, image), image.error});
      }
    }
    plan.inputs.push_back(std::move(one.input));
    plan.held.push_back(std::move(one.held));
    plan.identities.push_back(one.identity);
  }
  firstPages.push_back(plan.pages.size());
  FindDuplicates(planned, firstPages, &plan);
  return plan;
}

const Input* FindInput(const AlbumPlan& plan, uint64_t device, uint64_t inode) {
  for (size_t i = 0; i < plan.inputs.size(); ++i) {
    if (plan.identities[i].device == device && plan.identities[i].inode == inode) {
      return &plan.inputs[i];
    }
  }
  return nullptr;
}

std::string DescribeAlbum(const AlbumPlan& plan, const Options& options) {
  std::vector<std::vector<std::string>> rows{
      {"FORMAT", "PIXELS", "BITS", "COLOUR", "PROFILE", "TURNED", "PAGE (PT)", "STORED", "FILE"}};
  for (size_t i = 0; i < plan.pages.size(); ++i) {
    const PagePlan& page = plan.pages[i];
    const ImagePlan& image = page.image;
    char size[64];
    std::snprintf(size, sizeof size, "%.6gx%.6g", page.layout.page.width, page.layout.page.height);
    const int orientation = DrawnOrientation(image, options.layout);
    std::string stored = image.PassesThrough() ? "as it is" : "decoded: " + image.decodeReason;
    if (page.sameAs != i) stored = "same as page " + std::to_string(page.sameAs + 1);
    rows.push_back({ReaderOf(image.format).name,
                    std::to_string(image.width) + "x" + std::to_string(image.height),
                    std::to_string(image.depth), ColourName(image), ProfileName(image.profile),
                    orientation == 1 ? "no" : "EXIF " + std::to_string(orientation), size, stored,
                    Printable(PageName(plan, page))});
  }
  for (const PassedOver& file : plan.passedOver) {
    std::vector<std::string> row(rows[0].size(), "-");
    row[row.size() - 2] = file.reason;
    row.back() = Printable(file.path);
    rows.push_back(std::move(row));
  }
  std::vector<size_t> widths(rows[0].size());
  for (const auto& row : rows) {
    for (size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  }
  std::string table;
  for (const auto& row : rows) {
    for (size_t c = 0; c < row.size(); ++c) {
      table += row[c];
      if (c + 1 < row.size()) table += std::string(widths[c] - row[c].size() + 2, ' ');
    }
    table += '\n';
  }
  return table;
}

size_t WriteAlbum(const AlbumPlan& plan, const Options& options, Output& output, Console& console) {
  constexpr WorkBounds kBounds{uint64_t{8} << 20, 256};
  PdfDocument document(output, options.metadata, options.compression);
  std::vector<int> numbers(plan.pages.size(), 0);  // the image of each page; 0 for one that failed
  uint64_t bytes = 0;
  size_t failed = 0;
  const auto isFirst = [&](size_t i) { return plan.pages[i].sameAs == i; };
  uint64_t known = 0;  // bytes that will be there whatever the rest compresses to
  for (size_t i = 0; i < plan.pages.size(); ++i) {
    if (isFirst(i) && plan.pages[i].image.PassesThrough()) known += plan.pages[i].image.size;
  }
  output.CheckRoom(known);
  RunInOrder<Product>(
      plan.pages.size(), options.jobs, kBounds,
      [&](size_t i) { return isFirst(i) ? WeightOf(plan.pages[i]) : 0; },
      [&](size_t i) { return isFirst(i) ? EncodePage(plan, plan.pages[i], options) : Product{}; },
      [&](size_t i, Product product) {
        const PagePlan& page = plan.pages[i];
        if (product.problem) {
          console.Error(PageName(plan, page), Reason(product.problem));
          if (!options.skipBad) throw BadInput();
          ++failed;
          return;
        }
        const auto sayAll = [&](const std::vector<Note>& notes) {
          for (const Note& note : notes) console.Say(PageName(plan, page), note);
        };
        sayAll(page.image.notes);
        sayAll(product.image.notes);
        if (isFirst(i)) {
          try {
            numbers[i] = document.WriteImage(product.image, options.role,
                                             ImageName(plan, page, options.recordNames));
            product.source.CheckUnchanged();
          } catch (const ImageError& error) {  // and a part of it is in the PDF
            console.Error(PageName(plan, page), error.what());
            throw BadInput();
          }
        } else {
          numbers[i] = numbers[page.sameAs];
          if (numbers[i] == 0) {
            console.Error(PageName(plan, page), "holds the same damaged picture as " +
                                                    PageName(plan, plan.pages[page.sameAs]));
            ++failed;
            return;
          }
        }
        document.AddPage(numbers[i], page.layout);
        bytes += product.image.pixels.data.size();
        console.Progress(i + 1, plan.pages.size(), bytes);
      });
  console.EndProgress();
  if (failed == plan.pages.size()) {
    throw OutputError("was not written: no input is left that could be used");
  }
  document.Finish();
  output.Commit();
  return failed;
}

}  // namespace tool
