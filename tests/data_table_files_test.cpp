#include <gmock/gmock.h>
#include <unistd.h>
#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>

#include "platform/system/text.h"
#include "stats/api/data_table_fileInfo.h"
#include "tests/support/matchers.h"

namespace {

using namespace QVStats;
using namespace QVStats::QVStatModelFailureType;
using namespace QVStats::QVStatsBadData;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// A file that lives as long as the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text = "")
      : path_(testing::TempDir() + "qvtable" + std::to_string(getpid()) + "_" +
              std::to_string(++count_)) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const std::string& GetPath() const { return path_; }

 private:
  static inline int count_ = 0;
  std::string path_;
};

using Loader = QVStatModelResult (*)(QVDataTable&, QVPlatform::qvifstream&, const std::string&);

struct Loaded {
  QVStatModelResult result;
  QVDataTable table{"loaded"};
  std::vector<double> Doubles(const std::string& name) const {
    return table.GetDoubles(table.GetColumnFromName(name));
  }
  std::vector<std::string> Texts(const std::string& name) const {
    std::vector<std::string> texts;
    for (const QVDataTableRow& row : table.GetRows())
      texts.push_back(row.GetString(table.GetColumnFromName(name), 0));
    return texts;
  }
  unsigned int Level(const std::string& name) const {
    return table.GetColumnFromName(name).GetStatVariableType();
  }
  std::string Report() const { return result.ReportStatResultDetails(); }
};

Loaded LoadPath(Loader load, const std::string& path) {
  Loaded loaded;
  QVPlatform::qvifstream in(path);
  loaded.result = load(loaded.table, in, "data.txt");
  return loaded;
}

Loaded Load(Loader load, const std::string& text) {
  const TemporaryFile file(text);
  return LoadPath(load, file.GetPath());
}

Loaded LoadPGS(const std::string& text, bool matrix) {
  const TemporaryFile file(text);
  Loaded loaded;
  QVPlatform::qvifstream in(file.GetPath());
  loaded.result = QVLoadDataTableFromPGSFile(loaded.table, in, "data.pgs", matrix);
  return loaded;
}

constexpr Loader kCSV = QVLoadDataTableFromCSVFileWithHeader;
constexpr Loader kArff = QVLoadDataTableFromArffFile;
constexpr Loader kPlain = QVLoadDataTableFromPlainFileWithHeader;
constexpr Loader kBare = QVLoadDataTableFromPlainFileWithoutHeader;

double Mean(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

// Fisher's iris: 150 flowers, 50 of each species; the means are printed in many textbooks.
TEST(Loaders, ReadIrisFromArffAndCSV) {
  const Loaded arff = LoadPath(kArff, QVSTATS_TEST_DATA "/iris.arff");
  const Loaded csv = LoadPath(kCSV, QVSTATS_TEST_DATA "/iris.csv");
  for (const Loaded* loaded : {&arff, &csv}) {
    ASSERT_TRUE(loaded->result.IsSuccessful()) << loaded->Report();
    EXPECT_EQ(loaded->table.GetNumRows(), 150u);
    EXPECT_EQ(loaded->table.GetNumColumns(), 6u);
    EXPECT_THAT(Mean(loaded->Doubles("sepallength")), IsCloseTo(5.843333333333334, 1e-14));
    EXPECT_THAT(Mean(loaded->Doubles("sepalwidth")), IsCloseTo(3.057333333333333, 1e-14));
    EXPECT_THAT(Mean(loaded->Doubles("petallength")), IsCloseTo(3.758, 1e-14));
    EXPECT_THAT(Mean(loaded->Doubles("petalwidth")), IsCloseTo(1.199333333333333, 1e-14));
    EXPECT_EQ(loaded->Level("class"), 1u);
    EXPECT_EQ(loaded->Texts("class")[77], "Iris-versicolor");
  }
  // The declared categories come with the two sentinel categories; the inferred ones do not.
  EXPECT_EQ(arff.table.GetColumnFromName("class").GetNumUniqueDiscreteValues(), 5u);
  EXPECT_EQ(csv.table.GetColumnFromName("class").GetNumUniqueDiscreteValues(), 3u);
  EXPECT_EQ(arff.Doubles("LineNumbers")[0], 14.0);
  EXPECT_EQ(csv.table.GetColumnFromName("class").GetFullColumnName(), "data.txt::class");
}

TEST(Loaders, KeepEmptyFieldsOnlyBetweenCommas) {
  const Loaded csv = Load(kCSV, "a,b,c\n1,,3\n\n% comment\n 4 ,+5,\n?,6,7e0\n");
  ASSERT_TRUE(csv.result.IsSuccessful()) << csv.Report();
  EXPECT_THAT(csv.Doubles("a"), ElementsAre(1, 4, MissingDouble));
  EXPECT_THAT(csv.Doubles("b"), ElementsAre(MissingDouble, 5, 6));
  EXPECT_THAT(csv.Doubles("c"), ElementsAre(3, MissingDouble, 7));
  EXPECT_THAT(csv.Doubles("LineNumbers"), ElementsAre(2, 5, 6));
  EXPECT_TRUE(csv.table.GetColumnFromName("a").ColHasMissingData());
  EXPECT_FALSE(csv.table.GetColumnFromName("a").ColHasBadData());

  const Loaded plain = Load(kPlain, "a b\tc\n1,,3\n");
  EXPECT_THAT(plain.Report(),
              AllOf(HasSubstr("Num Field elements tokenized: 2; Expected 3\nFields: \n1 // 3 // "),
                    HasSubstr("Failed in Routine: QVDataTableFileInfo::GetNextDataFieldVector"),
                    HasSubstr("Called by Routine: QVDataTableFileInfo::ProcessDataLines"),
                    HasSubstr("Called by Routine: LoadDataTableFromPlainFileWithHeader"),
                    HasSubstr("File Name: data.txt\n"),
                    HasSubstr("Current File Line Number: 2\nLast Line Read In: 1,,3\n")));
  EXPECT_EQ(plain.result.GetFailureType(), MismatchBetweenPrivateVecSizes);
  EXPECT_EQ(plain.table.GetNumColumns(), 0u);

  const Loaded bare = Load(kBare, "% no header\n1, 2 ?\n3 , 4,x");
  ASSERT_TRUE(bare.result.IsSuccessful()) << bare.Report();
  EXPECT_THAT(bare.Doubles("Column_1"), ElementsAre(2, 4));
  EXPECT_THAT(bare.Texts("Column_2"), ElementsAre("MissingStringData", "x"));
}

TEST(Loaders, InferTheTypeOfAColumn) {
  // A text in the last line, after thousands of numbers, after missing values, or at once.
  std::string text = "number,late,few,many,after_missing\n";
  std::vector<std::string> many;
  for (int i = 0; i < 3000; ++i) {
    const bool last = i == 2999;
    many.push_back("id" + std::to_string(i % 40));
    text += std::to_string(i) + ".50," +
            (last    ? "x"
             : i % 2 ? "007"
                     : "7.0") +
            "," + (i % 19 == 0 ? "c" : std::to_string(i % 19)) + "," + many.back() + "," +
            (i < 5 ? "?" : "t") + "\n";
  }
  const Loaded loaded = Load(kCSV, text);
  ASSERT_TRUE(loaded.result.IsSuccessful()) << loaded.Report();
  EXPECT_EQ(loaded.Level("number"), 4u);
  EXPECT_EQ(loaded.Doubles("number")[1234], 1234.5);
  EXPECT_THAT(loaded.table.GetColumnFromName("late").GetUniqueDiscreteValues(),
              ElementsAre("007", "7.0", "x"))
      << "the texts as they stand in the file";
  EXPECT_EQ(loaded.Texts("late")[2998], "7.0");
  EXPECT_EQ(loaded.Level("few"), 1u) << "19 distinct texts";
  EXPECT_EQ(loaded.Level("many"), 5u) << "20 or more";
  EXPECT_EQ(loaded.Texts("many"), many);
  EXPECT_THAT(loaded.table.GetColumnFromName("after_missing").GetUniqueDiscreteValues(),
              ElementsAre("MissingStringData", "t"));
  EXPECT_EQ(loaded.Doubles("LineNumbers")[2999], 3001.0);
}

TEST(Loaders, ReadNumbersAsTheNearestDouble) {
  std::mt19937_64 engine(4);
  std::string text = "x\n";
  std::vector<double> expected;
  const char* const hard[] = {"9007199254740993",
                              "0.1",
                              "-0",
                              "1e22",
                              "123456789012345678901",
                              "4.9406564584124654e-324",
                              "1.7976931348623157e308",
                              "0.000001",
                              "9007199254740991.5",
                              "00000000000000000000012",
                              "1.",
                              ".5",
                              "-.5e-3",
                              "7450580596923828125e-27",
                              "inf"};
  for (const char* one : hard) {
    text += std::string(one) + "\n";
    expected.push_back(std::strtod(one, nullptr));
  }
  for (int i = 0; i < 2000; ++i) {
    char digits[40];
    const double value =
        std::ldexp(static_cast<double>(engine()), -static_cast<int>(engine() % 90));
    std::snprintf(digits, sizeof digits, "%.*f", static_cast<int>(engine() % 12), value);
    text += std::string(digits) + "\n";
    expected.push_back(std::strtod(digits, nullptr));
  }
  const Loaded loaded = Load(kCSV, text);
  ASSERT_EQ(loaded.Level("x"), 4u) << loaded.Report();
  EXPECT_EQ(loaded.Doubles("x"), expected);
  EXPECT_TRUE(std::signbit(loaded.Doubles("x")[2]));
  EXPECT_TRUE(loaded.table.GetColumnFromName("x").ColHasBadData()) << "the largest double";
}

TEST(Loaders, ReadAttributesOfEveryKind) {
  const Loaded loaded = Load(kArff,
                             "% comment\n@attribute 'the size' numeric\n@relation r\n"
                             "@Attribute colour {red, 'dark green'}\n@ATTRIBUTE when DATE yyyy\n"
                             "@attribute n integer\n@data\n1.5, red 1999 2\n?,?,?,?\n");
  ASSERT_TRUE(loaded.result.IsSuccessful()) << loaded.Report();
  EXPECT_THAT(loaded.Doubles("the size"), ElementsAre(1.5, MissingDouble));
  EXPECT_THAT(loaded.table.GetColumnFromName("colour").GetUniqueDiscreteValues(),
              ElementsAre("BadStringData", "MissingStringData", "dark green", "red"));
  EXPECT_EQ(loaded.Level("when"), 5u);
  EXPECT_EQ(loaded.Level("n"), 4u);

  struct Case {
    const char* text;
    const char* comment;
    unsigned int type;
  };
  const Case failures[] = {
      {"@relation r\n@attribute a\n@data\n",
       "Number of fields in input line (2) is less than minimum of 3", WrongInputVectorSize},
      {"@relation r\n@attribute a complex\n@data\n", "Unable to parse DataType",
       InternalLogicFailure},
      {"@relation r\n@attribute a {x, y\n@data\n", "No matching '}' for '{' ",
       InternalLogicFailure},
      {"@relation r\n@attribute a real\n1\n", "Switch should have caught all possibilities",
       InternalLogicFailure},
      {"% nothing\n\n", "Switch should have caught all possibilities", InternalLogicFailure},
      {"@relation r\n@data\n1\n", "No columns defined to parse data rows!", ColumnNotFound},
      {"@relation r\n@attribute a real\n@data\n1\nx\n", "Unable to parse field : x as a double!",
       ArgumentValueWrong},
      {"@relation r\n@attribute a {x}\n@data\nz\n",
       "String z not found in list of unique nominal values", ArgumentOutOfRange},
  };
  for (const Case& failure : failures) {
    const Loaded failed = Load(kArff, failure.text);
    EXPECT_EQ(failed.result.GetFailureType(), failure.type) << failure.text;
    EXPECT_THAT(failed.Report(), AllOf(HasSubstr(std::string(failure.comment) + " \n"),
                                       HasSubstr("Called by Routine: LoadDataTableFromArffFile"),
                                       HasSubstr("Header has Arff-style Attribute lines")))
        << failure.text;
    EXPECT_EQ(failed.table.GetNumColumns(), 0u);
  }
}

TEST(Loaders, ReadASimilarityMatrix) {
  const std::string text =
      "first comment\n\nIndex,Title,SimilarityMatrix\n0,one,1\n1,two,0.5,1\n2,three,?,0.25,1\n";
  const Loaded loaded = LoadPGS(text, true);
  ASSERT_TRUE(loaded.result.IsSuccessful()) << loaded.Report();
  const QVDataTableCol& matrix = loaded.table.GetColumnFromName("SimilarityMatrix");
  EXPECT_TRUE(matrix.ColIsLowerTriangular());
  EXPECT_EQ(matrix.GetTotalNumRowsInCol(), 3u);
  EXPECT_EQ(matrix.GetDouble(0, 1), 0.5);
  EXPECT_EQ(matrix.GetDouble(2, 1), 0.25);
  EXPECT_TRUE(matrix.RowColHasMissingData(0, 2) && matrix.ColHasMissingData());
  EXPECT_THAT(loaded.Texts("Title"), ElementsAre("one", "two", "three"));

  const Loaded leading = LoadPGS(text, false);
  ASSERT_TRUE(leading.result.IsSuccessful()) << leading.Report();
  EXPECT_EQ(leading.table.GetNumColumns(), 3u);
  EXPECT_THAT(leading.Doubles("Index"), ElementsAre(0, 1, 2));

  const Loaded wide = LoadPGS("\n\nh\n0,a,1\n1,b,1,1,1\n", true);
  EXPECT_THAT(wide.Report(), HasSubstr("Num Field elements tokenized: 5; Expected 4"));
  const Loaded word = LoadPGS("\n\nh\n0,a,1\n1,b,x,1\n", true);
  EXPECT_THAT(word.Report(), HasSubstr("Unable to parse field : x as a double!"));
  EXPECT_THAT(LoadPGS("one line\n", true).result,
              FailedWith(NoData, "QVDataTableFileInfo::GoToStartOfData"));
}

TEST(Loaders, MeetWhatFilesAreLike) {
  const Loaded endings = Load(kCSV,
                              "\xEF\xBB\xBFgr\xC3\xB6\xC3\x9F"
                              "e,b\r\n1,x\r\n2,\r\n3,y");
  ASSERT_TRUE(endings.result.IsSuccessful()) << endings.Report();
  EXPECT_THAT(endings.Doubles("gr\xC3\xB6\xC3\x9F"
                              "e"),
              ElementsAre(1, 2, 3));
  EXPECT_THAT(endings.Texts("b"), ElementsAre("x", "MissingStringData", "y"));

  const Loaded nul = Load(kCSV, std::string("a,b\n1,x\0y\n2,z\n", 14));
  ASSERT_TRUE(nul.result.IsSuccessful()) << nul.Report();
  EXPECT_EQ(nul.Texts("b")[0], std::string("x\0y", 3));

  const Loaded range = Load(kCSV, "a\n1e999\n2\n");
  EXPECT_EQ(range.Level("a"), 1u) << "a number out of range is a text";

  const std::string longText(10000000, 'z');
  const Loaded longLine = Load(kCSV, "a,b\n1," + longText + "\n2,b\n");
  ASSERT_TRUE(longLine.result.IsSuccessful());
  EXPECT_EQ(longLine.Texts("b")[0].size(), longText.size());
  EXPECT_THAT(longLine.Doubles("a"), ElementsAre(1, 2));

  std::string million = "a,b\n";
  for (int i = 1; i < 1000000; ++i) million += "1,2\n";
  const Loaded wide = Load(kCSV, million + "1,2,3\n4,5\n");
  EXPECT_THAT(wide.Report(), AllOf(HasSubstr("Num Field elements tokenized: 3; Expected 2"),
                                   HasSubstr("Current File Line Number: 1000001\n"),
                                   HasSubstr("Num Data Lines Processed: 999999\n")));

  const Loaded empty = Load(kCSV, "");
  EXPECT_THAT(empty.result, FailedWith(NoData, "QVDataTableFileInfo::GetNextHeaderFieldVector"));
  const Loaded headerOnly = Load(kCSV, "a,b");
  EXPECT_TRUE(headerOnly.result.IsSuccessful()) << headerOnly.Report();
  EXPECT_EQ(headerOnly.table.GetNumRows(), 0u);
  EXPECT_EQ(Load(kCSV, "a,a\n1,2\n").result.GetFailureType(), DuplicateNames);

  const Loaded directory = LoadPath(kCSV, testing::TempDir());
  EXPECT_EQ(directory.result.GetFailureType(), NoData);
  EXPECT_THAT(directory.Report(), HasSubstr("is a directory"));
  const Loaded absent = LoadPath(kArff, "/nonexistent/file");
  EXPECT_THAT(absent.Report(), HasSubstr("No such file"));
}

TEST(Loaders, ReadGzipAndTellDamage) {
  std::string text = "a,b\n";
  for (int i = 0; i < 50000; ++i) text += std::to_string(i) + "," + std::to_string(i % 97) + "\n";
  const TemporaryFile file;
  gzFile out = gzopen(file.GetPath().c_str(), "wb");
  gzwrite(out, text.data(), static_cast<unsigned int>(text.size()));
  gzclose(out);
  const Loaded loaded = LoadPath(kCSV, file.GetPath());
  ASSERT_TRUE(loaded.result.IsSuccessful()) << loaded.Report();
  EXPECT_EQ(loaded.Doubles("a")[49999], 49999.0);

  std::ifstream whole(file.GetPath(), std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(whole)), std::istreambuf_iterator<char>());
  const Loaded cut = Load(kCSV, bytes.substr(0, bytes.size() / 2));
  EXPECT_FALSE(cut.result.IsSuccessful()) << "a file that ends early is no shorter table";
  EXPECT_THAT(cut.Report(), HasSubstr("gzip"));
}

// The operations of the reader itself, in any order.
TEST(FileInfo, PositionsAndCounts) {
  const TemporaryFile file("free text\nanother\nName One,Two\n1,2\n\n3,4\n");
  QVPlatform::qvifstream in(file.GetPath());
  QVDataTableFileInfo info(in, "f", QVDataTableFileHeaderType::TwoCommentsThenColumnNameLine,
                           QVDataTableFileDataLayoutType::Rectangular, ",\n", "'\"", "%", "?");
  std::size_t count = 0;
  EXPECT_TRUE(info.CountNumberOfDataLines(count).IsSuccessful());
  EXPECT_EQ(count, 2u);
  std::vector<std::string> fields;
  EXPECT_THAT(info.GetNextHeaderFieldVector(fields),
              FailedWith(WrongDataViewFileState, "QVDataTableFileInfo::GetNextHeaderFieldVector"));
  EXPECT_TRUE(info.CountNumberOfHeaderColumns(count).IsSuccessful());
  EXPECT_EQ(count, 2u);
  EXPECT_TRUE(info.SetFileColumns().IsSuccessful());
  EXPECT_TRUE(info.GoToStartOfData().IsSuccessful());
  EXPECT_TRUE(info.GetNextDataFieldVector(fields).IsSuccessful());
  EXPECT_THAT(fields, ElementsAre("1", "2"));
  EXPECT_TRUE(info.GetNextDataFieldVector(fields).IsSuccessful());
  EXPECT_EQ(info.GetLineNumber(), 6u);
  EXPECT_THAT(info.GetNextDataFieldVector(fields).ReportStatResultDetails(),
              HasSubstr("While loop should have caught remaining data "));
  EXPECT_TRUE(info.ProcessDataLines().IsSuccessful());
  const auto column = info.GetFileColumns();
  EXPECT_EQ(column->GetColumnName(), "Name One");
  EXPECT_EQ(column->GetDataTableCol().GetDouble(1, 0), 3.0);
  const auto mismatch = info.SetFileColumns({"a"}, std::vector<unsigned int>{4, 4});
  EXPECT_EQ(*mismatch.GetComments(), "num names = 1 num stat var types = 2");

  // Without a header the first line counts, whatever it holds.
  const TemporaryFile bare("% a comment here\n1 2\n");
  QVPlatform::qvifstream bareIn(bare.GetPath());
  const auto open = [&](unsigned int headerType) {
    return QVDataTableFileInfo(bareIn, "f", headerType, QVDataTableFileDataLayoutType::Rectangular,
                               " ,\n", "'\"", "%", "?");
  };
  QVDataTableFileInfo first = open(QVDataTableFileHeaderType::NoHeader);
  EXPECT_TRUE(first.CountNumberOfHeaderColumns(count).IsSuccessful());
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(first.GetNextHeaderFieldVector(fields).GetFailureType(), WrongDataViewFileState);
  first.SetFileState(QVDataTableFileState::InHeader);
  EXPECT_EQ(first.GetNextHeaderFieldVector(fields).GetFailureType(), WrongDataViewFileType);
  EXPECT_EQ(open(99).SetFileColumns({"a"}, {4}).GetFailureType(), BadDataViewFileType);
}

TEST(FileInfo, ColumnsCollectTextsUntilTheirTypeIsKnown) {
  QVDataTableFileCol column("c", "f::c", 0, "?");
  for (int i = 0; i < 19; ++i) column.AddField(std::to_string(i));
  column.AddField("");
  EXPECT_EQ(column.GetNumRows(), 20u);
  EXPECT_EQ(column.NumUniqueStringsToConvert(), 20u);
  column.AddField("word");
  EXPECT_TRUE(column.FinishAddVars().IsSuccessful());
  EXPECT_EQ(column.GetCurrentStatVarType(), 5u);
  EXPECT_TRUE(column.GetDataTableCol().RowColHasMissingData(19, 0));
  EXPECT_EQ(column.GetDataTableCol().GetString(3, 0), "3");
  EXPECT_EQ(column.GetFullColumnName(), "f::c");
}

/// A table with every level and every kind of cell that a file can hold.
QVDataTable MakeRandomTable(std::mt19937& engine, std::size_t numRows) {
  const auto pick = [&](unsigned int n) {
    return std::uniform_int_distribution<unsigned int>(0, n - 1)(engine);
  };
  QVDataTableCol id("id", 5, numRows, 1, false), kind("kind", 1, numRows, 1, false),
      count("count", 3, numRows, 1, false), x("x", 4, numRows, 1, false);
  std::normal_distribution<double> normal;
  for (std::size_t i = 0; i < numRows; ++i) {
    QVAppendStringToCol(id, "m" + std::to_string(i));
    const char* const kinds[] = {"alpha", "b.c-d", "'quoted'", "MissingStringData",
                                 "BadStringData"};
    QVAppendStringToCol(kind, kinds[i < 5 ? i : pick(5)]);
    QVAppendIntToCol(count, pick(9) == 0   ? MissingInt
                            : pick(9) == 0 ? BadInt
                                           : static_cast<int>(pick(2000)) - 1000);
    QVAppendDoubleToCol(x, pick(9) == 0 ? MissingDouble
                           : pick(9) == 0
                               ? BadDouble
                               : std::ldexp(normal(engine), static_cast<int>(pick(200)) - 100));
  }
  QVDataTable table("random table");
  for (QVDataTableCol* column : {&id, &kind, &count, &x}) {
    QVFinishAppendingVars(*column);
    table.AddColumn(*column);
  }
  return table;
}

using WriteTable = QVStatModelResult (*)(QVPlatform::qvofstream&, const QVDataTable&,
                                         const std::string&);

TEST(Writers, WriteWhatTheirLoadersReadBack) {
  struct Case {
    WriteTable write;
    Loader load;
  };
  const Case formats[] = {{QVWriteDataTableToCSVFileWithHeader, kCSV},
                          {QVWriteDataTableToPlainFileWithHeader, kPlain},
                          {QVWriteDataTableToArffFile, kArff}};
  std::mt19937 engine(20);
  for (const Case& format : formats)
    for (const std::size_t numRows : {20u, 57u, 2500u}) {
      const QVDataTable table = MakeRandomTable(engine, numRows);
      const TemporaryFile file;
      QVPlatform::qvofstream out(file.GetPath());
      const QVStatModelResult written = format.write(out, table, "out");
      ASSERT_TRUE(written.IsSuccessful()) << written.ReportStatResultDetails();
      ASSERT_TRUE(out.close());
      const Loaded loaded = LoadPath(format.load, file.GetPath());
      ASSERT_TRUE(loaded.result.IsSuccessful()) << loaded.Report();
      EXPECT_EQ(loaded.Doubles("x"), table.GetDoubles(table.GetColumnFromName("x")));
      EXPECT_EQ(loaded.Doubles("count"), table.GetDoubles(table.GetColumnFromName("count")));
      for (const char* name : {"id", "kind"}) {
        const QVDataTableCol& original = table.GetColumnFromName(name);
        EXPECT_EQ(loaded.Level(name), original.GetStatVariableType());
        const std::vector<std::string> texts = loaded.Texts(name);
        for (std::size_t r = 0; r < numRows; ++r) ASSERT_EQ(texts[r], original.GetString(r, 0));
      }
      // What was read is written again without a second column of line numbers.
      const TemporaryFile again;
      QVPlatform::qvofstream outAgain(again.GetPath());
      EXPECT_TRUE(format.write(outAgain, loaded.table, "out").IsSuccessful());
      outAgain.close();
      EXPECT_TRUE(LoadPath(format.load, again.GetPath()).result.IsSuccessful());
    }
}

TEST(Writers, RefuseWhatWouldNotBeReadBack) {
  for (const char* text : {"a,b", "a\nb", "a\rb", "", "?", "%x", " % x", " "}) {
    QVDataTable table("t");
    QVDataTableCol column("name", 5, 2, 1, false);
    QVAppendStringToCol(column, "fine");
    QVAppendStringToCol(column, text);
    table.AddColumn(column);
    const TemporaryFile file;
    QVPlatform::qvofstream out(file.GetPath());
    const QVStatModelResult result = QVWriteDataTableToCSVFileWithHeader(out, table, "out.csv");
    EXPECT_EQ(result.GetFailureType(), ArgumentValueWrong) << text;
    EXPECT_THAT(result.ReportStatResultDetails(), HasSubstr("in row 1 of column \"name\"")) << text;
    EXPECT_TRUE(out.close());
    EXPECT_EQ(std::ifstream(file.GetPath()).peek(), EOF) << "nothing is written";
  }
}

TEST(Writers, KeepSubTablesArraysAndTriangles) {
  QVDataTable table("t");
  table.AddColumn(QVDataTableCol("a", {1, 2, 3, 4, 5, 6}, 2, false));
  table.AddColumn(QVDataTableCol("s", {1, 0.5, 1, 0.25, MissingDouble, 1}, 3, true));
  const TemporaryFile file;
  {
    QVPlatform::qvofstream out(file.GetPath());
    const QVDataTable sub("sub", table, QVDataTableRowSet(std::vector<std::size_t>{2, 0}));
    EXPECT_TRUE(QVWriteDataTableToCSVFileWithHeader(out, sub, "out").IsSuccessful());
    EXPECT_EQ(QVWriteDataTableToPGSFile(out, sub, "out").GetFailureType(), MatrixArgumentRequired);
  }
  const Loaded csv = LoadPath(kCSV, file.GetPath());
  EXPECT_THAT(csv.Doubles("a_1"), ElementsAre(6, 2));
  EXPECT_THAT(csv.Doubles("s_0"), ElementsAre(0.25, 1));
  {
    QVPlatform::qvofstream out(file.GetPath());
    const QVStatModelResult result = QVWriteDataTableToPGSFile(out, table, "out");
    EXPECT_TRUE(result.IsSuccessful()) << result.ReportStatResultDetails();
  }
  QVPlatform::qvifstream in(file.GetPath());
  QVDataTable pgs("pgs");
  EXPECT_TRUE(QVLoadDataTableFromPGSFile(pgs, in, "in", true).IsSuccessful());
  for (std::size_t r = 0; r < 3; ++r)
    for (std::size_t c = 0; c < 3; ++c)
      EXPECT_EQ(pgs.GetColumnFromName("SimilarityMatrix").GetDouble(r, c),
                table.GetColumnFromName("s").GetDouble(r, c));
}

}  // namespace
