#include "apps/molecule_source.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "platform/system/file_stream.h"
#include "tests/support/temporary_file.h"

namespace QVApps {
namespace {

using QVStats::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;

/// "line id value" of a molecule, "line id !reason" of a bad record.
std::vector<std::string> ReadAll(const std::string& path, const MoleculeSourceOptions& options) {
  MoleculeSource source(path, options);
  std::vector<std::string> rows;
  for (MoleculeRecord record; source.Next(record);) {
    EXPECT_EQ(record.number, rows.size() + 1);
    EXPECT_EQ(record.mol.IsEmpty(), !record.error.empty());
    const std::string value = record.value ? std::to_string(*record.value).substr(0, 4) : "-";
    rows.push_back(std::to_string(record.line) + " " + record.id + " " +
                   (record.error.empty() ? value : "!" + record.error));
  }
  return rows;
}

/// The text of the Failure, empty without one.
std::string FailureOf(const std::string& path, const MoleculeSourceOptions& options) {
  try {
    ReadAll(path, options);
  } catch (const Failure& failure) {
    return failure.what();
  }
  return {};
}

MoleculeSourceOptions Value(const std::string& name, bool required = true) {
  MoleculeSourceOptions options;
  options.valueName = name;
  options.valueRequired = required;
  return options;
}

std::string SDRecord(const std::string& title, const std::string& items) {
  return title + "\n\n\n  1  0  0  0  0  0  0  0  0  0999 V2000\n" +
         "    0.0000    0.0000    0.0000 C   0  0\nM  END\n" + items + "\n$$$$\n";
}

TEST(MoleculeSource, EveryFormatGivesTheSameRecords) {
  const TemporaryDirectory dir;
  const auto expected = ElementsAre("2 a 1.50", "3 b -", "4 c -2.0");
  EXPECT_THAT(ReadAll(dir.Write("t.csv", "Name,SMILES,y\na,CC, 1.5\nb,CO,\nc,CN,-2\n"), Value("y")),
              expected);
  EXPECT_THAT(
      ReadAll(dir.Write("t.tsv", "y\tsmiles\tid\n1.5\tCC\ta\n\tCO\tb\n-2\tCN\tc"), Value("y")),
      expected);
  EXPECT_THAT(
      ReadAll(dir.Write("t.smi", "SMILES\tName\ty\nCC\ta\t1.5\nCO\tb\t\nCN\tc\t-2\n"), Value("y")),
      expected);
  EXPECT_THAT(ReadAll(dir.Write("t.sdf", SDRecord("a", "> <y>\n1.5\n") + SDRecord("b", "") +
                                             SDRecord("c", "> <y>\n-2\n")),
                      Value("y")),
              ElementsAre("1 a 1.50", "11 b -", "19 c -2.0"));
  QVPlatform::qvofstream out(dir.GetPath("t.CSV.gz"));
  out << "Name,SMILES,y\r\na,CC,1.5\r\nb,CO,\r\nc,CN,-2\r\n";
  ASSERT_TRUE(out.close());
  EXPECT_THAT(ReadAll(dir.GetPath("t.CSV.gz"), Value("y")), expected);
}

TEST(MoleculeSource, QuotedFieldsAndColumnNamesAreKept) {
  const TemporaryDirectory dir;
  MoleculeSourceOptions options = Value("pIC50, nM");
  options.smilesColumn = "structure";
  options.idColumn = "Key";
  const std::string path = dir.Write("t.csv",
                                     "\xEF\xBB\xBFStructure,Key,\"pIC50, nM\",note\n\n"
                                     "C, \"k \"\"1\"\"\" ,7,\"two\nlines\"\nCC,k2,8,x\n");
  EXPECT_THAT(ReadAll(path, options), ElementsAre("3 k \"1\" 7.00", "5 k2 8.00"));
  MoleculeSource source(path, options);
  MoleculeRecord record;
  ASSERT_TRUE(source.Next(record));
  EXPECT_EQ(record.mol.GetSDData("note"), "two\nlines");
  EXPECT_EQ(record.smiles, "C");
  EXPECT_EQ(source.Locate(record), path + ": record 1 (line 3)");
}

TEST(MoleculeSource, BadRecordsDoNotStopTheOthers) {
  const TemporaryDirectory dir;
  EXPECT_THAT(ReadAll(dir.Write("t.csv", "smiles,id\nC1,a\nC,b,c\n,d\nC,\n"), {}),
              ElementsAre("2 a !unclosed ring 1 at character 2",
                          "3 b !3 fields where the header has 2 columns", "4 d !empty SMILES",
                          "5 record 4 -"));
  EXPECT_THAT(ReadAll(dir.Write("t.smi", "C( x\nC y\nC\n"), {}),
              ElementsAre("1 x !unclosed '(' at character 2", "2 y -", "3 record 3 -"));
}

TEST(MoleculeSource, ValuesJoinByIdentifier) {
  const TemporaryDirectory dir;
  MoleculeSourceOptions options = Value("Act");
  options.valuesFile = dir.Write("v.csv", "Name,Other,Act\n3,x,3.5\n1,x,1.5\n9,x,9.5\n");
  const std::string path = dir.Write("t.smi", "C 1\nCC 2\nCCC 3\n");
  EXPECT_THAT(ReadAll(path, options), ElementsAre("1 1 1.50", "2 2 -", "3 3 3.50"));
  MoleculeSource source(path, options);
  for (MoleculeRecord record; source.Next(record);) continue;
  EXPECT_EQ(source.GetNumUnusedValues(), 1u);

  EXPECT_EQ(FailureOf(dir.Write("other.smi", "C z\n"), options),
            dir.GetPath("v.csv") + ": no identifier is that of a molecule of " +
                dir.GetPath("other.smi"));
  options.valuesFile = dir.Write("w.csv", "Name,Act\n1,1.5\n1,2.5\n");
  EXPECT_EQ(FailureOf(path, options),
            dir.GetPath("w.csv") + ": line 3: another value of '1' stands on line 2");
  options.valuesFile = dir.Write("u.csv", "Name,Act\n2,2\n3,low\n");
  EXPECT_EQ(FailureOf(path, options),
            dir.GetPath("u.csv") + ": line 3: the value 'low' of '3' is not a finite number");
}

TEST(MoleculeSource, WhatIsWrongWithAFileIsNamed) {
  const TemporaryDirectory dir;
  struct Case {
    const char* name;
    std::string content;
    const char* value;
    std::string failure;  // behind the path
  };
  const Case cases[] = {
      {"a.csv", "", "y", ": empty; a table begins with a header line"},
      {"b.csv", "smiles,z\nC,1\n", "y", ": no value 'y'; the columns are 'smiles', 'z'"},
      {"c.csv", "structure,y\nC,1\n", "y",
       ": no column 'smiles'; name one of 'structure', 'y' with --smiles-column"},
      {"d.csv", "smiles,y\nC,1\nC,n/a\n", "y",
       ": line 3: the value 'n/a' of 'record 2' is not a "
       "finite number"},
      {"e.csv", "smiles,y\nC,nan\n", "y",
       ": line 2: the value 'nan' of 'record 1' is not a finite number"},
      {"large.csv", "smiles,y\nC,1e70\nC,-1.1e70\n", "y",
       ": line 3: the value '-1.1e70' of 'record 2' is beyond 1e+70"},
      {"f.csv", "smiles,y\nC,\n", "y", ": no molecule has a value 'y'"},
      {"g.csv", "smiles,\"y\nC,1\n", "y", ": line 1: a quote is not closed"},
      {"h.csv", "smiles,y,y\n", "y", ": the header has two columns 'y'"},
      {"i.smi", "", "y", ": no molecule could be read"},
      {"j.smi", "C1 a\n", "y", ": no molecule could be read"},
      {"k.smi", "C a\n", "y",
       ": no value 'y'; it has no header line that names columns; begin it with one like \"SMILES "
       "Name Value\", or give the values in a table (--values)"},
      {"l.sdf", SDRecord("a", "> <z>\n1\n"), "y", ": no value 'y'; the tags are 'z'"},
      {"m.xyz", "", "y", ": a file of molecules is named .sdf, .smi, .csv or .tsv, each also .gz"},
  };
  for (const Case& row : cases)
    EXPECT_EQ(FailureOf(dir.Write(row.name, row.content), Value(row.value)),
              dir.GetPath(row.name) + row.failure);
  EXPECT_THAT(FailureOf(dir.GetPath("none.sdf"), {}), HasSubstr("No such file"));
  // Values that are only looked at when they are there fail no file of queries.
  EXPECT_THAT(ReadAll(dir.GetPath("d.csv"), Value("y", false)),
              ElementsAre("2 record 1 1.00", "3 record 2 -"));
  EXPECT_THAT(ReadAll(dir.GetPath("k.smi"), Value("y", false)), ElementsAre("1 a -"));
}

TEST(MoleculeSource, ATruncatedGzipFailsAfterWhatCameBefore) {
  const TemporaryDirectory dir;
  for (const std::string name : {"a.csv.gz", "a.smi.gz"}) {
    QVPlatform::qvofstream out(dir.GetPath(name));
    out << (name == "a.csv.gz" ? "smiles,id\n" : "smiles id\n");
    for (int i = 0; i < 20000; ++i)
      out << "CC" << (name == "a.csv.gz" ? "," : " ") << std::to_string(i * 7919) << '\n';
    ASSERT_TRUE(out.close());
    const std::string bytes = dir.Read(name);
    MoleculeSource source(dir.Write("cut." + name, bytes.substr(0, bytes.size() / 2)));
    std::size_t count = 0;
    try {
      for (MoleculeRecord record; source.Next(record);) ++count;
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.what(), dir.GetPath("cut." + name) + ": the gzip file is truncated");
    }
    EXPECT_GT(count, 1000u);
    EXPECT_LT(count, 20000u);
  }
}

struct Totals {
  std::size_t molecules = 0;
  std::size_t values = 0;
  std::size_t atoms = 0;
  double sum = 0.0;
  std::size_t unused = 0;
};

Totals Total(const std::string& path, const MoleculeSourceOptions& options) {
  MoleculeSource source(path, options);
  Totals totals;
  for (MoleculeRecord record; source.Next(record);) {
    EXPECT_EQ(record.error, "") << source.Locate(record);
    ++totals.molecules;
    totals.values += record.value ? 1 : 0;
    totals.atoms += record.mol.GetNumAtoms();
    totals.sum += record.value.value_or(0.0);
  }
  totals.unused = source.GetNumUnusedValues();
  return totals;
}

// Counts and sums were taken from the files by text tools, atoms by the chemistry library itself.
TEST(MoleculeSource, MeasuredSetsAreReadWhole) {
  const std::string root = QVSTATS_RDKIT_DATA;
  const std::string smiles = root + "/Contrib/FreeWilson/data/CHEMBL2321810";
  const std::string sdf = root + "/Projects/DbCLI/testData/bzr.sdf";
  if (!std::filesystem::exists(smiles + ".smi") || !std::filesystem::exists(sdf))
    GTEST_SKIP() << "no measured sets in " << root;
  MoleculeSourceOptions options = Value("Act");
  options.valuesFile = smiles + "_act.csv";
  const Totals activities = Total(smiles + ".smi", options);
  EXPECT_EQ(activities.molecules, 1017u);
  EXPECT_EQ(activities.values, 1017u);
  EXPECT_EQ(activities.unused, 0u);
  EXPECT_EQ(activities.atoms, 33226u);
  EXPECT_NEAR(activities.sum, 6662.29, 1e-6);
  const Totals receptor = Total(sdf, Value("ACTIVITY"));
  EXPECT_EQ(receptor.molecules, 163u);
  EXPECT_EQ(receptor.values, 163u);
  EXPECT_EQ(receptor.atoms, 3649u);
  EXPECT_NEAR(receptor.sum, 1222.15, 1e-6);
}

}  // namespace
}  // namespace QVApps
