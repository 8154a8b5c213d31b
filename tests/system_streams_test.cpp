#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "platform/system/file_stream.h"
#include "platform/system/generic_data.h"
#include "platform/system/half.h"
#include "platform/system/output_file.h"
#include "tests/support/temporary_file.h"

namespace {

using QVPlatform::QVFloat16;
using QVPlatform::qvifstream;
using QVPlatform::qvofstream;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> ReadLines(qvifstream& in) {
  std::vector<std::string> lines;
  for (std::string line; in.getline(line);) lines.push_back(line);
  EXPECT_EQ(in.GetLineNumber(), lines.size());
  return lines;
}

std::vector<std::string> ReadLines(const std::string& path) {
  qvifstream in(path);
  const auto lines = ReadLines(in);
  EXPECT_FALSE(in.HasError()) << in.GetErrorText();
  return lines;
}

TEST(FileStream, LinesEndAsFilesEndThem) {
  const QVStats::TemporaryDirectory dir;
  EXPECT_THAT(ReadLines(dir.Write("unix", "a\n\nb\n")), ElementsAre("a", "", "b"));
  EXPECT_THAT(ReadLines(dir.Write("dos", "a\r\nb\rc\r\nend")), ElementsAre("a", "b\rc", "end"));
  EXPECT_THAT(ReadLines(dir.Write("empty", "")), ElementsAre());
  EXPECT_THAT(ReadLines(dir.Write("nul", std::string("a\0b\n", 4))),
              ElementsAre(std::string("a\0b", 3)));
  const std::string longLine(300000, 'x');  // longer than any buffer of the stream
  EXPECT_THAT(ReadLines(dir.Write("long", longLine + "\n" + longLine)),
              ElementsAre(longLine, longLine));
}

TEST(FileStream, GzipIsReadUnderAnyNameAndTruncationIsAnError) {
  const QVStats::TemporaryDirectory dir;
  qvofstream out(dir.GetPath("lines.gz"));
  for (int i = 0; i < 50000; ++i) out << std::to_string(i * 7919 % 50021) << '\n';
  ASSERT_TRUE(out.close()) << out.GetErrorText();
  const std::string bytes = dir.Read("lines.gz");
  EXPECT_EQ(bytes.compare(0, 2, "\x1f\x8b"), 0);
  const auto whole = ReadLines(dir.GetPath("lines.gz"));
  EXPECT_EQ(whole.size(), 50000u);
  EXPECT_EQ(ReadLines(dir.Write("renamed.txt", bytes)), whole);

  qvifstream in(dir.Write("cut.gz", bytes.substr(0, bytes.size() / 2)));
  const auto lines = ReadLines(in);
  EXPECT_EQ(in.GetErrorText(), dir.GetPath("cut.gz") + ": the gzip file is truncated");
  ASSERT_LT(lines.size(), whole.size());
  EXPECT_GT(lines.size(), 1000u);
  EXPECT_TRUE(std::equal(lines.begin(), lines.end(), whole.begin())) << "a cut line was delivered";

  std::string damaged = bytes;
  damaged[damaged.size() - 6] = static_cast<char>(~damaged[damaged.size() - 6]);  // its checksum
  qvifstream bad(dir.Write("damaged.gz", damaged));
  ReadLines(bad);
  EXPECT_THAT(bad.GetErrorText(), HasSubstr("the gzip file is damaged"));
}

TEST(FileStream, FilesThatCannotBeOpenedAreNamed) {
  const QVStats::TemporaryDirectory dir;
  qvifstream in(dir.GetPath("none"));
  std::string line = "old";
  EXPECT_FALSE(in.getline(line));
  EXPECT_EQ(line, "");
  EXPECT_EQ(in.GetErrorText(), dir.GetPath("none") + ": No such file or directory");
  EXPECT_FALSE(in.open(dir.GetPath("")));
  EXPECT_THAT(in.GetErrorText(), HasSubstr("is a directory"));
  EXPECT_FALSE(qvofstream().open(dir.GetPath("no/such/directory")));
  qvofstream full("/dev/full");
  full << "text";
  EXPECT_FALSE(full.close());
  EXPECT_EQ(full.GetErrorText(), "/dev/full: could not be written: No space left on device");
}

TEST(Half, EveryNumberSurvivesAndOthersRoundToTheNearest) {
  for (unsigned int bits = 0; bits <= 0xFFFF; ++bits) {
    const QVFloat16 half = QVFloat16::FromBits(static_cast<std::uint16_t>(bits));
    const float value = half;
    if (std::isnan(value)) {
      EXPECT_TRUE(QVPlatform::QVIsNaN(float{QVFloat16(value)}));
    } else {
      ASSERT_EQ(QVFloat16(value).GetBits(), bits);
    }
  }
  const auto bitsOf = [](double value) { return QVFloat16(value).GetBits(); };
  EXPECT_EQ(bitsOf(1.0), 0x3C00);
  EXPECT_EQ(bitsOf(-2.0), 0xC000);
  EXPECT_EQ(bitsOf(65504.0), 0x7BFF);
  EXPECT_EQ(bitsOf(std::nextafter(65520.0, 0.0)), 0x7BFF);
  EXPECT_EQ(bitsOf(65520.0), 0x7C00);
  EXPECT_EQ(bitsOf(std::ldexp(1.0, -24)), 0x0001);
  EXPECT_EQ(bitsOf(std::ldexp(1.0, -25)), 0x0000);                     // a tie, to even
  EXPECT_EQ(bitsOf(std::ldexp(3.0, -25)), 0x0002);                     // a tie, to even
  EXPECT_EQ(bitsOf(std::ldexp(1.0, -14) * (1 - 1e-9)), 0x0400);        // rounds up to normal
  EXPECT_EQ(bitsOf(1.0 + std::ldexp(1.0, -11)), 0x3C00);               // a tie, to even
  EXPECT_EQ(bitsOf(1.0 + std::ldexp(1.0, -11) * (1 + 1e-9)), 0x3C01);  // rounded once
}

struct Animal {
  virtual ~Animal() = default;
};
struct Cat : Animal {};
struct Dog : Animal {};

TEST(GenericData, FailedCastNamesTheTypesAndTheObject) {
  QVSystem::QVScopedRecordingSink sink;
  const Cat cat;
  const Animal* const animal = &cat;
  EXPECT_EQ(QVSystem::QVDowncastChecked<Cat>(animal), &cat);
  EXPECT_EQ(QVSystem::QVDowncastChecked<Dog>(static_cast<const Animal*>(nullptr)), nullptr);
  EXPECT_TRUE(sink.GetRecords().empty());
  EXPECT_EQ(QVSystem::QVDowncastChecked<Dog>(animal), nullptr);
  const auto texts = sink.GetTexts(QVSystem::QVErrorLevel::Fatal);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_THAT(texts[0],
              testing::MatchesRegex("dynamic_cast<.*Dog \\* >\\( .*Animal \\* \\) failed on "
                                    "'0x[0-9a-f]+', that points to a .*Cat\n"
                                    "Assertion failed at line [0-9]+ of "
                                    "platform/system/generic_data.h.\n"));
}

TEST(GenericData, ATagHoldsValuesOfManyTypes) {
  QVSystem::QVDataHolder holder;
  holder.AddData("x", std::string("text"));
  holder.AddData("x", 1.5F);
  holder.AddData("x", 2.5);
  holder.AddData("x", 3.5);
  EXPECT_EQ(*holder.FindData<double>("x"), 2.5);
  EXPECT_EQ(*holder.FindData<float>("x"), 1.5F);
  EXPECT_FALSE(holder.HasData<int>("x"));
  std::vector<std::string> types;
  for (const QVSystem::QVBaseData& datum : holder.GetDataIter("x"))
    types.push_back(QVSystem::QVGetTypeName(datum.GetType()));
  EXPECT_EQ(types.size(), 4u);
  EXPECT_EQ(types[3], "double");

  const QVSystem::QVDataHolder copy(holder);
  holder.SetData("x", 9.0);
  holder.SetData("y", 1);
  EXPECT_EQ(holder.GetData<double>("x"), 9.0);
  EXPECT_EQ(*copy.FindData<double>("x"), 2.5);
  EXPECT_THAT(holder.GetDataTags(), ElementsAre("x", "y"));
  EXPECT_TRUE(holder.DeleteData("x"));
  EXPECT_FALSE(holder.DeleteData("x"));

  QVSystem::QVScopedRecordingSink sink;
  EXPECT_EQ(holder.GetData<double>("y"), 0.0);  // an int
  EXPECT_EQ(holder.GetData<double>("x"), 0.0);  // nothing
  EXPECT_EQ(sink.GetTexts(QVSystem::QVErrorLevel::Fatal).size(), 2u);
}

TEST(NewFile, AppearsWholeOrNotAtAll) {
  const QVStats::TemporaryDirectory directory;
  const std::string path = directory.Write("table.csv.gz", "before");
  const auto countFiles = [&] {
    const std::filesystem::directory_iterator all(directory.GetPath(""));
    return std::distance(begin(all), end(all));
  };
  {
    const QVSystem::QVNewFile dropped(path);
    EXPECT_THAT(dropped.GetTemporaryName(), testing::EndsWith(".csv.gz"));
    std::ofstream(dropped.GetTemporaryName()) << "half";
    EXPECT_EQ(directory.Read("table.csv.gz"), "before");
    EXPECT_EQ(countFiles(), 2);
  }
  EXPECT_EQ(countFiles(), 1);
  // A link stays one, and what it names is replaced.
  const std::string link = directory.GetPath("link");
  std::filesystem::create_symlink("table.csv.gz", link);
  std::string problem;
  EXPECT_TRUE(QVSystem::QVWriteWholeFile(link, "after", problem));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(directory.Read("table.csv.gz"), "after");
  EXPECT_EQ(countFiles(), 2);

  EXPECT_FALSE(QVSystem::QVWriteWholeFile("/dev/full", "x", problem));
  EXPECT_EQ(problem, "No space left on device");
  EXPECT_FALSE(QVSystem::QVWriteWholeFile(directory.GetPath("no/file"), "x", problem));
  EXPECT_EQ(problem, "No such file or directory");
  EXPECT_EQ(QVSystem::QVNewFile("/dev/null").GetTemporaryName(), "/dev/null");
}

}  // namespace
