// main.cpp - jtpdf: images to PDF.
//
// The way of an image: Input (a name) -> ImageSource (bytes) -> ImagePlan (its header) ->
// PageLayout (its place) -> EncodedImage (made by the workers) -> PdfDocument (one writer, in
// order).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "album.h"
#include "album_table.h"
#include "album_writer.h"
#include "console.h"
#include "formats/decoder.h"
#include "input_list.h"
#include "interruption.h"
#include "options.h"
#include "output.h"

namespace pictures::tool {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kUsage = 2 };

std::vector<Input> CollectInputs(const Options& options) {
  std::vector<Input> inputs = ListInputs(options.inputs);
  if (!options.fromFile.empty()) {
    const std::vector<Input> listed =
        ReadInputList(options.fromFile, options.maxInput, options.bookmarks);
    inputs.insert(inputs.end(), listed.begin(), listed.end());
  } else if (inputs.empty()) {
    // A terminal, or the null device of a program that has no input.
    struct stat input;
    if (fstat(STDIN_FILENO, &input) != 0 || S_ISCHR(input.st_mode)) {
      throw UsageError("no input; name images or folders, or \"-\" for standard input");
    }
    inputs = ListInputs({"-"});
  }
  return inputs;
}

// The file to write must not be one that is read: -o is easily put in front of the wrong name.
void RefuseToReplaceInput(const AlbumPlan& plan, const Options& options) {
  if (options.ToStandardOutput()) return;
  struct stat output;
  if (stat(options.output.c_str(), &output) != 0 || !S_ISREG(output.st_mode)) return;
  if (const Input* input = FindInput(plan, output.st_dev, output.st_ino)) {
    throw UsageError(input->path +
                     " is an input and would be replaced by the output; choose another name with "
                     "-o");
  }
}

void Show(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw std::runtime_error("standard output: cannot be written");
  }
}

ExitStatus Write(const AlbumPlan& plan, const Options& options, Console& console) {
  const std::string name = options.ToStandardOutput() ? "standard output" : options.output;
  try {
    InstallSignalHandlers();
    const std::unique_ptr<Output> output =
        options.ToStandardOutput() ? OpenStandardOutput() : OpenFileOutput(options.output);
    const size_t failed = plan.failures.size() + WriteAlbum(plan, options, *output, console);
    if (failed > 0) {
      console.Error(name, std::to_string(failed) + " of " +
                              std::to_string(plan.pages.size() + plan.failures.size()) +
                              " inputs failed and were left out");
      return kFailed;
    }
    return kDone;
  } catch (const OutputError& error) {
    console.Error(name, error.what());
  } catch (const BadInput&) {
    console.Error(name, std::string("was not written, because an input failed") +
                            (options.skipBad ? "" : "; --skip-bad leaves such inputs out"));
  }
  return kFailed;
}

ExitStatus Run(const Options& options) {
  Console console(options.verbosity);
  if (!options.dryRun && options.ToStandardOutput() && isatty(STDOUT_FILENO) == 1) {
    throw UsageError("a PDF is not written to a terminal; name a file with -o, or pipe it on");
  }
  std::vector<Input> inputs;
  try {
    inputs = CollectInputs(options);
  } catch (const ImageError& error) {
    console.Error(options.fromFile == "-" ? "standard input" : options.fromFile, error.what());
    return kFailed;
  }
  if (inputs.empty()) throw UsageError("the list of --from-file is empty; there is nothing to do");

  const AlbumPlan plan = PlanAlbum(std::move(inputs), options);
  if (!options.dryRun) {
    for (const PassedOver& file : plan.passedOver) console.Say(file.path, {false, file.reason});
  }
  for (const Failure& failure : plan.failures) console.Error(failure.name, failure.reason);
  if (options.dryRun) {
    Show(DescribeAlbum(plan, options));
    return plan.failures.empty() ? kDone : kFailed;
  }
  RefuseToReplaceInput(plan, options);
  if (options.viewer.firstPage && *options.viewer.firstPage >= SheetCount(plan)) {
    throw UsageError("--viewer-initial-page: there are only " + std::to_string(SheetCount(plan)) +
                     " pages");
  }
  if (plan.pages.empty() || (!plan.failures.empty() && !options.skipBad)) {
    console.Error("", "nothing was written: " + std::to_string(plan.failures.size()) + " of " +
                          std::to_string(plan.pages.size() + plan.failures.size()) +
                          " inputs cannot be used" +
                          (plan.pages.empty() ? "" : "; --skip-bad leaves them out"));
    return kFailed;
  }
  return Write(plan, options, console);
}

// A file that is opened while a standard stream is closed would get its number, and with it what
// belongs to the stream. The null device takes the place, opened the wrong way round: using the
// stream fails as if it were closed. False where that cannot be.
bool KeepStandardStreams() {
  constexpr int kModes[] = {O_WRONLY, O_RDONLY, O_RDONLY};
  for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
    if (fcntl(number, F_GETFD) >= 0) continue;
    if (open("/dev/null", kModes[number]) != number) return false;
  }
  return true;
}

// The formats are those whose libraries were there when it was built.
std::string Version() {
  std::string text = "jtpdf " JTPDF_TOOL_VERSION "\nReads ";
  const std::span<const Decoder* const> decoders = Decoders();
  for (size_t i = 0; i < decoders.size(); ++i) {
    text += i == 0 ? "" : i + 1 < decoders.size() ? ", " : " and ";
    text += decoders[i]->name;
  }
  return text + '\n';
}

}  // namespace
}  // namespace pictures::tool

int main(int count, char** arguments) {
  if (!pictures::tool::KeepStandardStreams()) return pictures::tool::kFailed;
  try {
    const pictures::tool::Options options = pictures::tool::ParseOptions(count, arguments);
    if (options.help || options.version) {
      pictures::tool::Show(options.help ? pictures::tool::kHelp : pictures::tool::Version());
      return pictures::tool::kDone;
    }
    return pictures::tool::Run(options);
  } catch (const pictures::tool::UsageError& error) {
    std::fprintf(stderr, "jtpdf: %s (see jtpdf --help)\n", error.what());
    return pictures::tool::kUsage;
  } catch (const std::bad_alloc&) {
    std::fputs("jtpdf: there is not enough memory; try with fewer jobs (-j 1)\n", stderr);
    return pictures::tool::kFailed;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "jtpdf: %s\n", error.what());
    return pictures::tool::kFailed;
  }
}
