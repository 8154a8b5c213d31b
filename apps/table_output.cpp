#include "apps/table_output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "apps/commands.h"

namespace QVApps {

namespace {

/// The name of the file while it is written; ".gz" stays at the end, where it means compression.
std::string MakePartialName(const std::string& path) {
  const bool gzip = path.size() > 3 && path.substr(path.size() - 3) == ".gz";
  return path + (gzip ? ".partial.gz" : ".partial");
}

}  // namespace

std::string Describe(const QVStats::QVStatModelResult& result) {
  std::string text;
  for (const std::string& comment : result.GetComments())
    text += (text.empty() ? "" : "\n") + comment;
  return text.empty() ? result.ReportStatResultDetails() : text;
}

void WriteTable(const std::string& path, const QVStats::QVDataTable& table, TableWriter write) {
  std::error_code ignored;
  const bool direct =
      std::filesystem::exists(path, ignored) && !std::filesystem::is_regular_file(path, ignored);
  const std::string target = direct ? path : MakePartialName(path);
  QVPlatform::qvofstream out(target);
  if (!out.IsOpen()) throw Failure(out.GetErrorText());
  const QVStats::QVStatModelResult written = write(out, table, path);
  std::string problem;
  if (!out.close())
    problem = out.GetErrorText();
  else if (written.NotSuccessful())
    problem = Describe(written);
  else if (!direct && std::rename(target.c_str(), path.c_str()) != 0)
    problem = path + ": " + std::strerror(errno);
  if (problem.empty()) return;
  if (!direct) std::remove(target.c_str());
  throw Failure(problem);
}

}  // namespace QVApps
