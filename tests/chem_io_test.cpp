#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "platform/chem/mol_io.h"
#include "platform/system/error_handler.h"
#include "platform/system/file_stream.h"
#include "tests/support/temporary_file.h"

namespace QVChem {
namespace {

using QVStats::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;

/// "record/line: " and the title of a molecule or the reason of a bad record.
std::vector<std::string> Summarize(QVMolReader& reader) {
  std::vector<std::string> rows;
  QVGraphMol mol;
  for (auto status = reader.Read(mol); status != QVReadStatus::End; status = reader.Read(mol)) {
    const bool bad = status == QVReadStatus::BadRecord;
    EXPECT_EQ(bad, mol.IsEmpty());
    rows.push_back(std::to_string(reader.GetRecordNumber()) + "/" +
                   std::to_string(reader.GetLineNumber()) + ": " +
                   (bad ? "bad: " + reader.GetBadRecordText() : mol.GetTitle()));
  }
  EXPECT_TRUE(mol.IsEmpty());
  return rows;
}

QVMolReadOptions ReturnBad() {
  QVMolReadOptions options;
  options.badRecords = QVBadRecords::Return;
  return options;
}

/// A carbon bonded to another atom; `symbol` "Xx" makes it a bad record.
std::string SDRecord(const std::string& title, const std::string& symbol, const std::string& y,
                     const std::string& items = "") {
  return title + "\n\n\n  2  1  0  0  0  0  0  0  0  0999 V2000\n" +
         "    0.0000    0.0000    0.0000 C   0  0\n    1.5000    " + y + "    0.5000 " + symbol +
         "   0  0\n  1  2  1  0\nM  END\n" + items + "$$$$\n";
}

TEST(MolReader, SmilesLinesAreRecordsWithTheirNumbers) {
  const TemporaryDirectory dir;
  QVMolReader reader(
      dir.Write("a.smi", "CCO ethanol (95 %)\r\n\n# a comment\nC1CC\tbroken\nc1ccccc1\n" +
                             std::string("CC\0 nul\n", 8) + "O  water"),
      ReturnBad());
  EXPECT_THAT(Summarize(reader),
              ElementsAre("1/1: ethanol (95 %)", "2/4: bad: unclosed ring 1 at character 2",
                          "3/5: ", "4/6: bad: NUL byte", "5/7: water"));
  EXPECT_FALSE(reader.HasError());
}

TEST(MolReader, SkippedRecordsAreReportedWithTheirPlace) {
  const TemporaryDirectory dir;
  const QVSystem::QVScopedRecordingSink sink;
  QVMolReader reader(dir.Write("a.smi", "C one\n\nC( two\nCC three\n"));
  EXPECT_THAT(Summarize(reader), ElementsAre("1/1: one", "3/4: three"));
  EXPECT_THAT(
      sink.GetTexts(QVSystem::QVErrorLevel::Warning),
      ElementsAre(dir.GetPath("a.smi") + ": record 2 (line 3): unclosed '(' at character 2"));
}

TEST(MolReader, AHeaderLineNamesTheColumns) {
  const TemporaryDirectory dir;
  QVMolReader reader(
      dir.Write("a.smi", "SMILES\tName\tpIC50\tnote\nCC\tet hane\t5.1\t\nC\tx\t1\t2\t3\nCO\n"),
      ReturnBad());
  QVGraphMol mol;
  ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule);
  EXPECT_EQ(reader.GetSmiles(), "CC");
  EXPECT_EQ(mol.GetTitle(), "et hane");
  EXPECT_EQ(mol.GetSDData("pIC50"), "5.1");
  EXPECT_FALSE(mol.HasSDData("note"));
  ASSERT_EQ(reader.Read(mol), QVReadStatus::BadRecord);
  EXPECT_EQ(reader.GetBadRecordText(), "5 columns where the header has 4");
  EXPECT_EQ(mol.GetTitle(), "x");
  ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule);
  EXPECT_EQ(reader.GetRecordNumber(), 3u);
}

TEST(MolReader, SDRecordsKeepTitleAndData) {
  const TemporaryDirectory dir;
  const std::string items =
      ">  <LogP>  (1)\n7.2\n\n> <note>\nfirst\n> second\n\n>  <empty>\n\n> <last>\nno blank line\n";
  QVMolReader reader(dir.Write("a.sdf", SDRecord("one", "C", "0.0000", items) +
                                            SDRecord("two", "Xx", "0.0000", "> <LogP>\n1\n\n") +
                                            "three\n\n\ngarbage\n$$$$\n\n\n"),
                     ReturnBad());
  QVGraphMol mol;
  ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule) << reader.GetBadRecordText();
  EXPECT_EQ(mol.GetTitle(), "one");
  EXPECT_EQ(mol.GetSDData("LogP"), "7.2");
  EXPECT_EQ(mol.GetSDData("note"), "first\n> second");
  EXPECT_TRUE(mol.HasSDData("empty"));
  EXPECT_EQ(mol.GetSDData("last"), "no blank line");
  EXPECT_EQ(mol.GetCoordinates()[1].z, 0.5);
  ASSERT_EQ(reader.Read(mol), QVReadStatus::BadRecord);
  EXPECT_EQ(reader.GetLineNumber(), 21u);
  EXPECT_THAT(reader.GetBadRecordText(), HasSubstr("Xx"));
  EXPECT_EQ(mol.GetTitle(), "two");
  EXPECT_EQ(mol.GetSDData("LogP"), "1");
  ASSERT_EQ(reader.Read(mol), QVReadStatus::BadRecord);
  EXPECT_THAT(reader.GetBadRecordText(), HasSubstr("line 36"));
  EXPECT_EQ(reader.Read(mol), QVReadStatus::End);
  EXPECT_FALSE(reader.HasError());
}

// Blocks of which RDKit finds out late that they are bad.
TEST(MolReader, BlocksThatContradictThemselvesAreBadRecords) {
  const auto record = [](const std::string& counts, const std::string& bond) {
    return "v3\n\n\n  0  0  0     0  0            999 V3000\nM  V30 BEGIN CTAB\nM  V30 COUNTS " +
           counts +
           "\nM  V30 BEGIN ATOM\nM  V30 1 C 0 0 0 0\nM  V30 2 O 1.2 0 0 0\nM  V30 END ATOM\n"
           "M  V30 BEGIN BOND\nM  V30 " +
           bond + "\nM  V30 END BOND\nM  V30 END CTAB\nM  END\n$$$$\n";
  };
  const TemporaryDirectory dir;
  QVMolReader reader(
      dir.Write(
          "a.sdf",
          record("2 y 0 0 0", "1 1 1 2") + record("2 1 0 0 0", "1 1 1 9") +
              "v2\n\n\n  0  1  0  0  0  0  0  0  0  0999 V2000\n  2  3  1  0\nM  END\n$$$$\n" +
              record("2 1 0 0 0", "1 1 1 2")),
      ReturnBad());
  EXPECT_THAT(Summarize(reader),
              ElementsAre("1/1: bad: a number cannot be read",
                          testing::StartsWith("2/17: bad: the connection table contradicts itself"),
                          testing::StartsWith("3/33: bad: the connection table contradicts itself"),
                          "4/40: v3"));
}

TEST(MolReader, CrLfAndAMissingLastLineAreTheSameRecord) {
  const TemporaryDirectory dir;
  std::string text = SDRecord("one", "N", "0.0000");
  text.resize(text.size() - 5);  // no "$$$$"
  QVMolReader bare(dir.Write("bare.sdf", text));
  EXPECT_THAT(Summarize(bare), ElementsAre("1/1: one"));
  std::string dos;
  for (const char c : SDRecord("one", "N", "0.0000", "> <a>\n1\n\n"))
    dos += c == '\n' ? "\r\n" : std::string(1, c);
  QVMolReader reader(dir.Write("dos.sdf", dos));
  QVGraphMol mol;
  ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule);
  EXPECT_EQ(mol.GetSDData("a"), "1");
  QVMolReader empty(dir.Write("empty.sdf", ""));
  EXPECT_THAT(Summarize(empty), ElementsAre());
  EXPECT_FALSE(empty.HasError());
}

TEST(MolReader, FaultsOfTheFileAreErrorsNotMolecules) {
  const TemporaryDirectory dir;
  for (const std::string name : {"a.sdf.gz", "a.smi.gz"}) {
    QVPlatform::qvofstream out(dir.GetPath(name));
    for (int i = 0; i < 2000; ++i)
      out << (name == "a.smi.gz" ? "CCCCCCCC m" + std::to_string(i * 77777) + "\n"
                                 : SDRecord("m" + std::to_string(i * 77777), "C", "0.0000"));
    ASSERT_TRUE(out.close());
    const std::string bytes = dir.Read(name);
    QVMolReader reader(dir.Write("cut." + name, bytes.substr(0, bytes.size() / 2)), ReturnBad());
    const auto rows = Summarize(reader);
    EXPECT_GT(rows.size(), 100u);
    EXPECT_LT(rows.size(), 2000u);
    for (const std::string& row : rows) EXPECT_THAT(row, testing::Not(HasSubstr("bad")));
    EXPECT_EQ(reader.GetErrorText(), dir.GetPath("cut." + name) + ": the gzip file is truncated");
  }
  EXPECT_THAT(QVMolReader(dir.GetPath("none.smi")).GetErrorText(), HasSubstr("No such file"));
  EXPECT_THAT(QVMolReader(dir.Write("a.xyz", "")).GetErrorText(), HasSubstr("is named .smi"));
}

TEST(MolReader, ConsecutiveRecordsOfOneTitleAreConformers) {
  const TemporaryDirectory dir;
  QVMolReader reader(
      dir.Write("a.sdf", SDRecord("a", "C", "0.1000", "> <e>\n1\n\n") +
                             SDRecord("a", "C", "0.2000", "> <e>\n2\n\n") +
                             SDRecord("a", "N", "0.3000") + SDRecord("b", "Xx", "0.0000") +
                             SDRecord("", "O", "0.0000") + SDRecord("", "O", "0.1000")),
      ReturnBad());
  QVMCMol mol;
  ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule);
  ASSERT_EQ(mol.GetNumConformers(), 2u);
  EXPECT_EQ(mol.GetConformer(1).GetSDData("e"), "2");
  EXPECT_EQ(mol.GetConformer(1).GetCoordinates()[1].y, 0.2);
  EXPECT_FALSE(mol.HasSDData("e"));
  EXPECT_EQ(reader.GetRecordNumber(), 1u);
  ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule);  // the same title, another molecule
  EXPECT_EQ(mol.GetNumConformers(), 1u);
  EXPECT_EQ(reader.GetRecordNumber(), 3u);
  EXPECT_EQ(reader.Read(mol), QVReadStatus::BadRecord);
  EXPECT_EQ(mol.GetTitle(), "b");
  for (int i = 0; i < 2; ++i) {  // without a title each record is a molecule
    ASSERT_EQ(reader.Read(mol), QVReadStatus::Molecule);
    EXPECT_EQ(mol.GetNumConformers(), 1u);
  }
  EXPECT_EQ(reader.Read(mol), QVReadStatus::End);
}

TEST(MolReader, HydrogensOfAFileStayUnlessSuppressed) {
  const TemporaryDirectory dir;
  const std::string path = dir.Write("a.sdf", SDRecord("CH4", "H", "0.0000"));
  QVGraphMol mol;
  QVMolReader(path).Read(mol);
  EXPECT_EQ(mol.GetNumAtoms(), 2u);
  EXPECT_EQ(mol.GetAtom(0).GetNumHydrogens(), 4u);
  QVMolReadOptions options;
  options.parse.suppressHydrogens = true;
  QVMolReader(path, options).Read(mol);
  EXPECT_EQ(mol.GetNumAtoms(), 1u);
  EXPECT_EQ(mol.GetAtom(0).GetNumHydrogens(), 4u);
}

TEST(MolWriter, WhatIsWrittenReadsBackTheSame) {
  const TemporaryDirectory dir;
  for (const char* name : {"a.sdf", "a.sdf.gz", "a.smi", "a.smi.gz"}) {
    QVMolWriter writer(dir.GetPath(name));
    std::vector<std::string> expected;
    for (const char* smiles : {"N[C@@H](C)C(=O)O", "C/C=C\\CO", "C[N+](C)(C)Cc1ccncc1", "[2H]OC"}) {
      QVGraphMol mol;
      ASSERT_TRUE(QVParseSmiles(mol, smiles));
      mol.SetTitle(std::string("title of ") + smiles);
      mol.SetSDData("two lines", "1\n\n2");
      ASSERT_TRUE(writer.Write(mol)) << writer.GetErrorText();
      expected.push_back(QVCreateSmiles(mol));
    }
    EXPECT_FALSE(writer.Write(QVGraphMol()));
    EXPECT_FALSE(writer.close());
    EXPECT_THAT(writer.GetErrorText(), HasSubstr("the molecule has no atoms"));

    QVMolReader reader(dir.GetPath(name));
    QVGraphMol mol;
    std::vector<std::string> found;
    while (reader.Read(mol) == QVReadStatus::Molecule) {
      found.push_back(QVCreateSmiles(mol));
      EXPECT_THAT(mol.GetTitle(), HasSubstr("title of "));
      EXPECT_EQ(mol.GetSDData("two lines"), mol.HasCoordinates() ? "1\n2" : "");
    }
    EXPECT_EQ(found, expected) << name;
  }
}

TEST(MolWriter, ConformersBecomeRecords) {
  const TemporaryDirectory dir;
  const std::string path = dir.Write("in.sdf", SDRecord("a", "O", "0.1000", "> <e>\n1\n\n") +
                                                   SDRecord("a", "O", "0.2000", "> <e>\n2\n\n"));
  QVMCMol mol;
  QVMolReader(path).Read(mol);
  mol.SetSDData("pKa", "15.5");
  QVMolWriter writer(dir.GetPath("out.sdf"));
  ASSERT_TRUE(writer.Write(mol));
  ASSERT_TRUE(writer.close());
  QVMCMol again;
  QVMolReader(dir.GetPath("out.sdf")).Read(again);
  ASSERT_EQ(again.GetNumConformers(), 2u);
  EXPECT_EQ(again.GetConformer(1).GetCoordinates()[1].y, 0.2);
  EXPECT_EQ(again.GetConformer(1).GetSDData("e"), "2");
  EXPECT_EQ(again.GetConformer(0).GetSDData("pKa"), "15.5");
}

}  // namespace
}  // namespace QVChem
