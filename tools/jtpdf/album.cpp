#include "album.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <iterator>
#include <utility>

#include "duplicates.h"
#include "formats/decoder.h"
#include "input_problem.h"
#include "ordered_work.h"

namespace pictures::tool {
namespace {

// Small files are kept from their planning to their writing, and so are those with many pages, as
// many as fit in here, which is less than one photograph takes when it is decoded: opening a file
// is most of the work on a small one, and on each page of one that passes through.
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

// A page that does not fit fails alone.
void LayOutPages(const Options& options, PlannedInput* planned) {
  for (ImagePlan& image : planned->images) {
    planned->layouts.emplace_back();
    if (!image.error.empty()) continue;
    try {
      planned->layouts.back() = LayOut(image, options.layout);
      const std::string& note = planned->layouts.back().note;
      if (!note.empty()) image.notes.push_back({true, note});
    } catch (const ImageError& error) {
      image.error = error.what();
    }
  }
}

void PlanInput(const Options& options, std::atomic<size_t>* heldBytes, PlannedInput* planned) {
  const Input& input = planned->input;
  const PipeRules rules{options.maxInput, "--max-input",
                        [](Bytes head) { RecogniseOrThrow(head); }};
  ImageSource source = input.standardInput ? ImageSource::Read(0, rules)
                                           : ImageSource::Open(input.path, false, rules);
  const Bytes file = source.View();
  UseUnchanged(source, [&] {
    const Decoder& decoder = RecogniseOrThrow(file.first(std::min(file.size(), kRecognisedBytes)));
    planned->images = decoder.plan(file, options.limits);
    if (options.firstFrameOnly) planned->images.resize(1);
    LayOutPages(options, planned);
    planned->sampleHash = SampleHash(file);
  });
  planned->identity = source.Identity();
  // Of a larger map no more than this is in memory.
  const size_t size = std::min(file.size(), MappedFile::kMostTouched);
  const bool keep = !source.CanReopen() || ((!source.IsMapped() || planned->images.size() > 1) &&
                                            heldBytes->fetch_add(size) <= kMostHeld);
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
      inside.input.chapter = one.input.title;
      opened.push_back(std::move(inside));
    }
  }
  return opened;
}

// The first input that has the bytes of this one; itself, too, where it vanished between two looks,
// which writing it will say.
size_t FirstLike(DuplicateFinder& finder, size_t input, const PlannedInput& planned) {
  try {
    return finder.FirstLike(input, planned.sampleHash, planned.identity);
  } catch (const ImageError&) {
    return input;
  }
}

// Two pages of one image: of the same bytes, and the same page in them.
void FindDuplicates(const std::vector<PlannedInput>& planned, const std::vector<size_t>& firstPages,
                    AlbumPlan* plan) {
  DuplicateFinder finder([&](size_t input) { return OpenInput(*plan, input, false); });
  for (size_t input = 0; input < planned.size(); ++input) {
    const size_t pages = firstPages[input + 1] - firstPages[input];
    if (pages == 0) continue;
    const size_t first = FirstLike(finder, input, planned[input]);
    if (first == input) continue;
    for (size_t i = 0; i < pages; ++i) {
      plan->pages[firstPages[input] + i].sameAs = firstPages[first] + i;
    }
  }
}

std::string PageName(const Input& input, const ImagePlan& image) {
  return input.Name() + (image.pages > 1 ? ", page " + std::to_string(image.page) : "");
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
        const size_t number = plan.pages.size();
        const size_t cells = options.layout.grid.Cells();
        plan.pages.push_back({i, std::move(image), one.layouts[k], number / cells, number});
        MoveToCell(number % cells, options.layout, &plan.pages.back().layout);
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

size_t SheetCount(const AlbumPlan& plan) {
  return plan.pages.empty() ? 0 : plan.pages.back().sheet + 1;
}

std::string PageName(const AlbumPlan& plan, const PagePlan& page) {
  return PageName(plan.inputs[page.input], page.image);
}

ImageSource OpenInput(const AlbumPlan& plan, size_t input, bool touch) {
  if (!plan.held[input].View().empty()) return plan.held[input];
  ImageSource source = ImageSource::Open(plan.inputs[input].path, touch);
  if (source.Identity() != plan.identities[input]) throw InputChanged();
  return source;
}

const Input* FindInput(const AlbumPlan& plan, uint64_t device, uint64_t inode) {
  for (size_t i = 0; i < plan.inputs.size(); ++i) {
    if (plan.identities[i].device == device && plan.identities[i].inode == inode) {
      return &plan.inputs[i];
    }
  }
  return nullptr;
}

}  // namespace pictures::tool
