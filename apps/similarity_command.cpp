// qvstats similarity: the similarities of all pairs of molecules, as a triangle in a file.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "apps/commands.h"
#include "apps/molecule_source.h"
#include "apps/progress.h"
#include "apps/table_output.h"
#include "platform/likeness/vsepr.h"
#include "platform/likeness/vsepr_index.h"
#include "platform/system/memory.h"
#include "stats/api/data_table_fileInfo.h"

namespace QVApps {

namespace {

using namespace QVStats;

struct Arguments {
  std::string path;
  std::string out;
  MoleculeSourceOptions source;
  bool quiet = false;
};

/// A title as a field of the file: no character that would end it.
std::string MakeTitle(std::string title) {
  for (char& c : title)
    if (c == ',' || c == '\n' || c == '\r') c = ';';
  return title.empty() || title == "?" ? "untitled" : title;
}

struct Molecules {
  QVDataTableCol index{"Index", QVStatVariableType::Interval, 0, 1, false};
  QVDataTableCol title{"Title", QVStatVariableType::Identifier, 0, 1, false};
  std::vector<double> triangle;
  std::size_t size = 0;
  std::size_t numBad = 0;
};

/// Appends a row, while there is memory for the triangle and for the column that holds it later.
void Append(std::vector<double>& triangle, const std::vector<double>& row) {
  if (const std::size_t wanted = triangle.size() + row.size(); wanted > triangle.capacity()) {
    const std::size_t room = wanted + triangle.size() / 4;
    std::string problem;
    if (!QVSystem::QVHasMemory(2.0 * sizeof(double) * static_cast<double>(room), problem))
      throw Failure("the matrix of " + std::to_string(row.size()) + " molecules or more " +
                    problem);
    triangle.reserve(room);
  }
  triangle.insert(triangle.end(), row.begin(), row.end());
}

/// Reads the molecules, each compared with all before it and itself.
Molecules Read(const Arguments& arguments) {
  Molecules molecules;
  MoleculeSource source(arguments.path, arguments.source);
  Progress progress("comparing", 0, arguments.quiet);
  QVLikeness::QVVseprIndex index;
  std::vector<double> row;
  for (MoleculeRecord record; source.Next(record); progress.Step()) {
    if (!record.error.empty()) {
      std::cerr << source.Locate(record) << ": " << record.error << '\n';
      ++molecules.numBad;
      continue;
    }
    const QVLikeness::QVVseprFingerprint fingerprint(record.mol, QVLikeness::QVVseprOptions());
    index.Add(fingerprint);
    row.resize(index.GetSize());
    index.GetTanimotos(fingerprint, row.data());
    Append(molecules.triangle, row);
    QVAppendIntToCol(molecules.index, static_cast<int>(molecules.size++));
    QVAppendStringToCol(molecules.title, MakeTitle(record.id));
  }
  return molecules;
}

int Run(const Arguments& arguments) {
  const Molecules molecules = Read(arguments);
  if (molecules.size == 0) throw Failure(arguments.path + ": no molecules");
  QVDataTable table("similarities");
  table.AddColumn(molecules.index);
  table.AddColumn(molecules.title);
  table.AddColumn(QVDataTableCol("SimilarityMatrix", molecules.triangle, molecules.size, true));
  WriteTable(arguments.out, table, QVWriteDataTableToPGSFile);
  std::cerr << molecules.size << " molecules, " << molecules.triangle.size() << " similarities\n";
  return molecules.numBad == 0 ? kDone : kSomeRefused;
}

}  // namespace

void AddSimilarityCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "similarity", "Write the similarities of all pairs of molecules as a triangle");
  auto arguments = std::make_shared<Arguments>();
  command->add_option("FILE", arguments->path, "Molecules (.smi, .sdf, .csv, also .gz)")
      ->required();
  command->add_option("OUT", arguments->out, "The file to write (.pgs, also .gz)")->required();
  command->add_option("--smiles", arguments->source.smilesColumn, "The SMILES column of a table");
  command->add_option("--id", arguments->source.idColumn, "The column or tag of the identifier");
  command->add_flag("--quiet", arguments->quiet, "No progress line");
  command->footer(
      "Similarity is the Tanimoto coefficient of VSEPR fingerprints. Row k of the file holds the\n"
      "number and the title of molecule k and its similarities to molecules 0 to k.\n"
      "Example:\n"
      "  qvstats similarity train.smi train.pgs && qvstats table train.pgs");
  command->callback([arguments, &exitCode] { exitCode = Run(*arguments); });
}

}  // namespace QVApps
