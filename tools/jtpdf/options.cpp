#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdint>
#include <thread>
#include <utility>

#include "measures.h"
#include "pdf_date.h"
#include "text.h"
#include "words.h"

namespace pictures::tool {

// Twenty-four lines of eighty columns: the smallest terminal shows them all.
const std::string_view kHelp =
    R"(Usage: jtpdf [OPTION]... FILE|FOLDER|-...   Each image becomes a page of a PDF
 -o, --output FILE     else to standard output    --from-file FILE  more inputs
 -S, --pagesize SIZE   A4, A5, A3, Letter, Legal, WxH (mm, cm, in, pt), A4^T
 -s, --imgsize SIZE    WxH, Wx, xH, 300dpi, 50%       -b, --border V[:H]
 -f, --fit HOW         into, fill, exact, shrink, enlarge
 -a, --auto-orient     turn pages as their images     --nup 2x3  on each page
     --crop-border, --bleed-border, --trim-border, --art-border V[:H]
 -r, --rotation HOW    auto (EXIF), none, 0, 90, 180, 270 (clockwise)
     --first-frame-only, --all-frames of files    --bookmarks  one for an input
     --title, --author, --subject, --keywords, --creator TEXT
     --creationdate, --moddate DATE   2026-05-17T12:30:00Z; none unless asked
     --role ROLE       photo, text, background, ...: recorded; so --record-names
 -j, --jobs N          images at a time (default: the processors)
     --compression N   0 to 12 (6), for images that are not stored as they are
 -O, --optimize        as small as can be without loss, whatever time it takes
     --max-pixels N    refuse larger images, and more than 4 N bytes (500000000)
     --max-input N     refuse more bytes (4G) from a pipe
     --skip-bad  leave out what fails         --dry-run  list what would be done
 -q, --quiet  -v, --verbose  -h, --help  --version    --viewer-...: see jtpdf(1)
--version names the kinds that are read. Exit: 0 done, 1 failed, 2 usage.
The manual is jtpdf(1). Examples:
  jtpdf scan*.jpg photo.png map.jp2 -o album.pdf
  jtpdf -S A4 -b 1cm -a holiday/ -o holiday.pdf
  find . -name '*.tif' -print0 | jtpdf --from-file - -o plans.pdf
)";

namespace {

constexpr char kBracketMark = '\x01';

std::wstring ParseText(const std::string& text, const char* option) {
  const std::optional<std::wstring> wide = FromUtf8(text);
  if (!wide) throw UsageError(std::string(option) + ": the text is not UTF-8; convert it first");
  return *wide;
}

constexpr std::array<std::pair<std::string_view, TPdfImageRole>, 9> kRoles{
    {{"background", kPdfImageRoleBackground},
     {"photo", kPdfImageRolePhoto},
     {"mask", kPdfImageRoleMask},
     {"border", kPdfImageRoleBorder},
     {"clipart", kPdfImageRoleClipArt},
     {"alpha", kPdfImageRoleAlpha},
     {"text", kPdfImageRoleText},
     {"shape", kPdfImageRoleShape},
     {"other", kPdfImageRoleOther}}};

// Degrees clockwise; none given: as EXIF says.
constexpr std::array<std::pair<std::string_view, std::optional<int>>, 6> kTurns{
    {{"auto", std::nullopt}, {"none", 0}, {"0", 0}, {"90", 90}, {"180", 180}, {"270", 270}}};

constexpr std::array<std::pair<std::string_view, Fit>, 5> kFits{{{"into", Fit::kInto},
                                                                 {"fill", Fit::kFill},
                                                                 {"exact", Fit::kExact},
                                                                 {"shrink", Fit::kShrink},
                                                                 {"enlarge", Fit::kEnlarge}}};

// "20M": a number of bytes.
uint64_t ParseByteCount(const std::string& text, const char* option) {
  constexpr uint64_t kMost = uint64_t{1} << 40;
  const std::string lower = LowerAscii(text);
  const size_t suffix = std::string_view("kmg").find(lower.empty() ? ' ' : lower.back());
  if (suffix == std::string_view::npos) return ParseNumber<uint64_t>(text, 1, kMost, option);
  const int shift = 10 * (static_cast<int>(suffix) + 1);
  return ParseNumber<uint64_t>(text.substr(0, text.size() - 1), 1, kMost >> shift, option) << shift;
}

// The values as they were given.
struct Words {
  std::optional<std::string> output, fromFile, pageSize, imageSize, border, cropBorder, bleedBorder,
      trimBorder, artBorder, nup, fit, turn, role, jobs, compression, pixels, maxInput,
      creationDate, modDate;
  std::string title, author, subject, creator;
  std::vector<std::string> keywords;
  ViewerWords viewer;
  bool quiet = false, verbose = false;
};

void DeclareWords(CLI::App* app, Options* options, Words* words) {
  // CLI11 takes "[a,b]" for a list, but names and titles may be written so: the mark that
  // Read puts behind the bracket hides it and is taken off again here.
  const auto add = [&](const char* names, auto& to) {
    return app->add_option(names, to)->transform([](std::string text) {
      if (text.ends_with(kBracketMark)) text.pop_back();
      return text;
    });
  };
  add("inputs", options->inputs);
  add("-o,--output", words->output);
  add("--from-file", words->fromFile);
  add("-S,--pagesize", words->pageSize);
  add("-s,--imgsize", words->imageSize);
  add("-b,--border", words->border);
  add("-f,--fit", words->fit);
  add("-r,--rotation", words->turn);
  add("--crop-border", words->cropBorder);
  add("--bleed-border", words->bleedBorder);
  add("--trim-border", words->trimBorder);
  add("--art-border", words->artBorder);
  add("--nup", words->nup);
  add("--role", words->role);
  add("--title", words->title);
  add("--author", words->author);
  add("--subject", words->subject);
  add("--keywords", words->keywords)->allow_extra_args(false);  // again and again
  add("--creator", words->creator);
  add("--creationdate", words->creationDate);
  add("--moddate", words->modDate);
  add("-j,--jobs", words->jobs);
  add("--compression", words->compression);
  add("--max-pixels", words->pixels);
  add("--max-input", words->maxInput);
  add("--viewer-panes", words->viewer.panes);
  add("--viewer-initial-page", words->viewer.initialPage);
  add("--viewer-magnification", words->viewer.magnification);
  add("--viewer-page-layout", words->viewer.pageLayout);
}

void DeclareFlags(CLI::App* app, Options* options, Words* words) {
  app->add_flag("-a,--auto-orient", options->layout.autoOrient);
  app->add_flag("--first-frame-only", options->firstFrameOnly);
  app->add_flag("--all-frames", options->limits.allFrames);
  app->add_flag("--bookmarks", options->bookmarks);
  app->add_flag("--record-names", options->recordNames);
  app->add_flag("-O,--optimize", options->optimize);
  app->add_flag("--skip-bad", options->skipBad);
  app->add_flag("--dry-run", options->dryRun);
  app->add_flag("-q,--quiet", words->quiet);
  app->add_flag("-v,--verbose", words->verbose);
  app->add_flag("-h,--help", options->help);
  app->add_flag("--version", options->version);
  app->add_flag("--viewer-fit-window", words->viewer.fitWindow);
  app->add_flag("--viewer-center-window", words->viewer.centerWindow);
  app->add_flag("--viewer-fullscreen", words->viewer.fullScreen);
}

void Read(int count, const char* const* arguments, CLI::App* app) {
  std::vector<std::string> marked;  // the last first, as CLI11 wants them
  for (int i = count - 1; i > 0; --i) {
    marked.emplace_back(arguments[i]);
    if (marked.back().ends_with(']')) marked.back() += kBracketMark;
  }
  try {
    app->parse(marked);
  } catch (const CLI::ParseError& error) {
    throw UsageError(Printable(error.what()));
  }
}

constexpr LayoutNames kLayoutNames{
    "-S", "-s", "-b", "--crop-border", "--bleed-border", "--trim-border", "--art-border"};

void InterpretLayout(const Words& words, LayoutOptions* layout) {
  layout->names = kLayoutNames;
  if (words.pageSize) layout->page = ParsePageSize(*words.pageSize);
  if (words.imageSize) layout->image = ParseImageSize(*words.imageSize);
  if (words.border) layout->border = ParseBorder(*words.border);
  for (const auto& [word, border] : {std::pair(&words.cropBorder, &layout->cropBorder),
                                     {&words.bleedBorder, &layout->bleedBorder},
                                     {&words.trimBorder, &layout->trimBorder},
                                     {&words.artBorder, &layout->artBorder}}) {
    if (*word) *border = ParseBorder(**word);
  }
  if (words.fit) layout->fit = Choose(kFits, *words.fit, "-f");
  if (words.turn) layout->turn = Choose(kTurns, *words.turn, "-r");
  if (!words.nup) return;
  layout->grid = ParseGrid(*words.nup);
  if (!layout->page.width || !layout->page.height) {
    throw UsageError(
        "--nup: the pages need a size with both sides; choose one with -S, such as A4");
  }
  if (layout->autoOrient) {
    throw UsageError(
        "--nup and -a contradict each other; lay the pages on their side with -S A4^T");
  }
}

void InterpretNumbers(const Words& words, Options* options) {
  constexpr unsigned kMostJobs = 256;
  options->jobs = words.jobs ? ParseNumber(*words.jobs, 1u, kMostJobs, "-j")
                             : std::clamp(std::thread::hardware_concurrency(), 1u, kMostJobs);
  if (words.compression) {
    options->compression = ParseNumber(*words.compression, 0, 12, "--compression");
  }
  options->limits.option = "--max-pixels";
  if (words.pixels) {
    options->limits.maxPixels =
        ParseNumber<uint64_t>(*words.pixels, 1, uint64_t{1} << 40, "--max-pixels");
  }
  if (words.maxInput) options->maxInput = ParseByteCount(*words.maxInput, "--max-input");
}

std::string Joined(const std::vector<std::string>& words) {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : ", ") + word;
  return joined;
}

Metadata InterpretMetadata(const Words& words) {
  return {ParseText(words.title, "--title"),
          ParseText(words.author, "--author"),
          ParseText(words.subject, "--subject"),
          ParseText(Joined(words.keywords), "--keywords"),
          ParseText(words.creator, "--creator"),
          words.creationDate ? ParseDate(*words.creationDate) : L"",
          words.modDate ? ParseDate(*words.modDate) : L""};
}

Verbosity InterpretVerbosity(const Words& words) {
  if (words.quiet && words.verbose) {
    throw UsageError("-q and -v contradict each other; choose one");
  }
  if (words.quiet) return Verbosity::kQuiet;
  return words.verbose ? Verbosity::kVerbose : Verbosity::kNormal;
}

std::string FileName(const std::string& name, const char* option, const char* dash) {
  if (!name.empty()) return name;
  throw UsageError(std::string(option) + ": the name is empty; name a file, or - for " + dash);
}

void CheckInputs(const Options& options) {
  const auto fromStandardInput =
      std::count(options.inputs.begin(), options.inputs.end(), "-") + (options.fromFile == "-");
  if (fromStandardInput > 1) throw UsageError("standard input can be read only once");
}

}  // namespace

Options ParseOptions(int count, const char* const* arguments) {
  Options options;
  Words words;
  CLI::App app;
  app.set_help_flag();  // --help is ours
  DeclareWords(&app, &options, &words);
  DeclareFlags(&app, &options, &words);
  Read(count, arguments, &app);
  if (options.help || options.version) return options;
  try {
    InterpretLayout(words, &options.layout);
  } catch (const MeasureError& error) {
    throw UsageError(error.what());
  }
  InterpretNumbers(words, &options);
  options.metadata = InterpretMetadata(words);
  options.viewer = InterpretViewer(words.viewer);
  options.verbosity = InterpretVerbosity(words);
  if (words.role) options.role = Choose(kRoles, *words.role, "--role");
  if (words.output) options.output = FileName(*words.output, "-o", "standard output");
  if (words.fromFile) options.fromFile = FileName(*words.fromFile, "--from-file", "standard input");
  CheckInputs(options);
  return options;
}

}  // namespace pictures::tool
