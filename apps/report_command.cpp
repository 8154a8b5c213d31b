#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>

#include "apps/commands.h"
#include "apps/krige_arguments.h"
#include "apps/progress.h"
#include "platform/depict/image_writer.h"
#include "stats/api/krige_2d_mol_depict.h"

namespace QVApps {

namespace {

struct ReportArguments : KrigeArguments {
  std::string title;
  std::vector<double> classes;
  std::vector<std::string> properties;
  std::string page = "A4";
  unsigned int neighbours = 6;
  unsigned int figures = 4;
  bool noDetails = false;
  std::string out;
  std::string query;
};

struct PageSize {
  const char* name;
  double width;  // in points
  double height;
};
constexpr PageSize kPages[] = {
    {"A4", QVDepict::QVMultiPageImageFile::A4LongSide, QVDepict::QVMultiPageImageFile::A4ShortSide},
    {"slide", 960.0, 540.0}};

/// Pixels of a PNG for a point.
constexpr double kPngScale = 2.0;

// Colours that all readers can tell apart, and that black figures can be read on.
constexpr QVSystem::QVColor kRaising{0, 114, 178};
constexpr QVSystem::QVColor kLowering{213, 94, 0};
constexpr QVSystem::QVColor kClasses[] = {
    {230, 159, 0}, {86, 180, 233}, {0, 158, 115}, {240, 228, 66}, {204, 121, 167}};

const PageSize& FindPage(const std::string& name) {
  for (const PageSize& page : kPages)
    if (page.name == name) return page;
  return kPages[0];
}

QVStats::QVKrigeReportOptions MakeReportOptions(const ReportArguments& arguments) {
  QVStats::QVKrigeReportOptions options;
  options.SetResponseName(arguments.value)
      .SetUnlog(arguments.unlog)
      .SetShowConfidence(true)
      .SetShowKrigeDetails(!arguments.noDetails)
      .SetResponseSignificantFigures(arguments.figures)
      .SetContributionPositiveColor(kRaising)
      .SetContributionNegativeColor(kLowering);
  for (const double boundary : arguments.classes) options.PushClassificationBoundry(boundary);
  for (const QVSystem::QVColor& color : kClasses) options.PushClassificationColor(color);
  for (const std::string& tag : arguments.properties) options.PushSDProperty(tag);
  return options;
}

/// Rows and columns for `count` cells a little wider than high, as large as the panel lets them be.
std::pair<unsigned int, unsigned int> ChooseGrid(double width, double height, unsigned int count) {
  constexpr double kAspect = 1.2;
  std::pair<unsigned int, unsigned int> best(0, 0);
  double largest = 0.0;
  for (unsigned int columns = 1; columns <= count; ++columns) {
    const unsigned int rows = (count + columns - 1) / columns;
    const double size = std::min(width / columns / kAspect, height / rows);
    if (size <= largest) continue;
    largest = size;
    best = {rows, columns};
  }
  return best;
}

/// Fails before the model is trained, not after, where that can be known.
void CheckOut(const std::string& out) {
  if (!QVDepict::QVIsImageFileName(out))
    throw Failure(out + ": a report is a .pdf, .png or .svg file");
  std::filesystem::path directory = std::filesystem::path(out).parent_path();
  if (directory.empty()) directory = ".";
  if (!std::filesystem::is_directory(directory))
    throw Failure(out + ": there is no directory " + directory.string());
  if (::access(directory.c_str(), W_OK) != 0)
    throw Failure(out + ": the directory " + directory.string() + " cannot be written to");
}

/// Draws a page for each record of the query file.
class QueryReporter {
 public:
  QueryReporter(const ReportArguments& arguments, const KrigePredictor& predictor)
      : arguments_(arguments),
        predictor_(predictor),
        options_(MakeReportOptions(arguments)),
        page_(FindPage(arguments.page)),
        writer_(arguments.out, kPngScale) {
    // The training panel is high and narrow without a title, wide with one.
    const double width = arguments.title.empty() ? 0.4 : arguments.noDetails ? 1.0 : 0.65;
    const double height = arguments.title.empty() ? 1.0 : 0.55;
    grid_ = ChooseGrid(width * page_.width, height * page_.height, arguments.neighbours);
  }

  void Run() {
    MoleculeSource source(arguments_.query, MakeSourceOptions(arguments_));
    Progress progress("drawing", 0, arguments_.quiet);
    for (MoleculeRecord record; source.Next(record); progress.Step()) {
      if (record.error.empty() && predictor_.Prepare(record.mol, record.error)) {
        DrawPage(record);
        continue;
      }
      ++refused_;
      std::cerr << source.Locate(record) << ": " << record.error << ", no page\n";
    }
    if (numPages_ == 0) throw Failure(arguments_.query + ": no molecule to report on");
    CheckWritten(writer_.Close());
  }

  std::size_t GetNumRefused() const { return refused_; }

 private:
  void DrawPage(MoleculeRecord& record) {
    record.mol.SetTitle(record.id);
    const QVStats::QVMolKrigeResult result = predictor_.GetResult(record.mol);
    if (!result.Valid()) ++refused_;
    options_.SetTitle(FillIn(arguments_.title, record.id));
    QVDepict::QVImage image(page_.width, page_.height);
    // What could not be drawn is reported where it happens; the page holds the rest.
    QVStats::QVKrigeRenderReport(image, result, record.mol, options_, grid_.first, grid_.second);
    CheckWritten(writer_.Add(image));
    ++numPages_;
  }

  static std::string FillIn(std::string title, const std::string& id) {
    constexpr const char* kPlace = "{id}";
    if (const std::size_t at = title.find(kPlace); at != std::string::npos)
      title.replace(at, 4, id);
    return title;
  }

  void CheckWritten(bool written) const {
    if (!written) throw Failure(arguments_.out + ": the report could not be written");
  }

  const ReportArguments& arguments_;
  const KrigePredictor& predictor_;
  QVStats::QVKrigeReportOptions options_;
  const PageSize& page_;
  std::pair<unsigned int, unsigned int> grid_;
  QVDepict::QVImageFileWriter writer_;
  std::size_t numPages_ = 0;
  std::size_t refused_ = 0;
};

int Report(const ReportArguments& arguments) {
  CheckOut(arguments.out);
  KrigePredictor predictor(arguments);
  const std::size_t refused = TrainFor(arguments.query, arguments, predictor);
  QueryReporter reporter(arguments, predictor);
  reporter.Run();
  return refused + reporter.GetNumRefused() == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddReportCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "report", "Draw a page for each prediction: the value, its error, and why");
  const auto arguments = std::make_shared<ReportArguments>();
  AddKrigeOptions(*command, *arguments);
  command->add_option("--title", arguments->title,
                      "Title of the pages; {id} stands for the molecule's identifier");
  command
      ->add_option("--classes", arguments->classes,
                   "Boundaries of response classes, for example 5,7: show their probabilities")
      ->delimiter(',');
  command
      ->add_option("--property", arguments->properties,
                   "Column or SD tag of the query to list on its page")
      ->delimiter(',');
  command->add_option("--page", arguments->page, "Size of the pages")
      ->check(CLI::IsMember({"A4", "slide"}))
      ->capture_default_str();
  command
      ->add_option("--neighbours", arguments->neighbours,
                   "How many training molecules to show, by the size of their weight")
      ->check(CLI::Range(0, 60))
      ->capture_default_str();
  command->add_option("--figures", arguments->figures, "Significant figures of printed values")
      ->check(CLI::Range(1, 12))
      ->capture_default_str();
  command->add_flag("--no-details", arguments->noDetails,
                    "Leave out the variogram and the quality of the model");
  command
      ->add_option("--out", arguments->out,
                   "File to write: .pdf with all pages; .png or .svg, then a file for each page "
                   "(report.png, report-2.png, ...)")
      ->required();
  command->add_option("QUERY", arguments->query, "Molecules to report on, in any of the formats")
      ->required();
  command->footer(
      "Example:\n"
      "  printf 'CCO ethanol\\nCCCO propanol\\nCCCCO butanol\\nCCCCCO pentanol\\n' > known.smi\n"
      "  printf 'id,logP\\nethanol,-0.3\\npropanol,0.3\\nbutanol,0.9\\npentanol,1.5\\n' > "
      "logp.csv\n"
      "  echo 'CCCCCCO hexanol' | qvstats report --train known.smi --values logp.csv --value logP "
      "--classes 0,1 --out report.pdf -");
  command->callback([arguments, &exitCode] { exitCode = Report(*arguments); });
}

}  // namespace QVApps
