#include "apps/table_output.h"

#include "apps/commands.h"
#include "platform/system/output_file.h"

namespace QVApps {

std::string Describe(const QVStats::QVStatModelResult& result) {
  std::string text;
  for (const std::string& comment : result.GetComments())
    text += (text.empty() ? "" : "\n") + comment;
  return text.empty() ? result.ReportStatResultDetails() : text;
}

void WriteTable(const std::string& path, const QVStats::QVDataTable& table, TableWriter write) {
  QVSystem::QVNewFile file(path);
  const std::string& target = file.GetTemporaryName();
  QVPlatform::qvofstream out(target);
  QVStats::QVStatModelResult written(true);
  if (out.IsOpen()) written = write(out, table, path);
  // The stream's text begins with the name it was given.
  if (!out.close()) throw Failure(path + out.GetErrorText().substr(target.size()));
  if (written.NotSuccessful()) throw Failure(Describe(written));
  if (!file.Commit()) throw CannotWrite(path);
}

}  // namespace QVApps
