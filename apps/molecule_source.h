/// \file
/// \brief Where the commands read molecules from: one record at a time from any supported file.
///
///     MoleculeSource source("train.smi", options);
///     for (MoleculeRecord record; source.Next(record);)
///       if (record.error.empty()) Use(record.mol, *record.value);
///
/// Files by extension, each also with .gz:
/// - .sdf, .sd, .mol: the title is the identifier; SD data are the columns.
/// - .smi, .smiles, .ism: "SMILES identifier"; a first line that begins with the word SMILES is a
///   header which names further columns.
/// - .csv, .tsv: a header line, quoted fields; the SMILES and identifier columns by name.
/// "-" is the standard input, SMILES unless the options say otherwise.
///
/// Everything that is wrong with a file as a whole is a Failure that names the file and, where
/// there is one, the line. A bad record is an error of that record only.
#ifndef QVSTATS_APPS_MOLECULE_SOURCE_H
#define QVSTATS_APPS_MOLECULE_SOURCE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/chem/mol.h"

namespace QVApps {

struct MoleculeRecord {
  std::size_t number = 0;  ///< from 1; bad records count
  std::size_t line = 0;    ///< the first line of the record, from 1
  /// The identifier; "record 12" when the file has none. Known for most bad records too.
  std::string id;
  /// The SMILES as the file has it; empty for SD files. See GetSmilesOf.
  std::string smiles;
  /// The molecule without explicit hydrogens, all other columns as its SD data; empty when bad.
  QVChem::QVGraphMol mol;
  /// Why the record is no molecule, in one line without the place; empty for a molecule.
  std::string error;
  /// The measured value as it stands in the file, and as a number when it is one.
  std::string valueText;
  std::optional<double> value;
};

/// \return the SMILES of the file, or else one written from the molecule.
std::string GetSmilesOf(const MoleculeRecord& record);

enum class MoleculeFileFormat { ByExtension, Smiles, SDF, CSV, TSV };

struct MoleculeSourceOptions {
  MoleculeFileFormat format = MoleculeFileFormat::ByExtension;
  /// The SMILES column of a table; if empty, "smiles" or "canonical_smiles" in any case.
  std::string smilesColumn;
  /// The column or SD tag of the identifier; if empty, the title, or in a table the first of "id",
  /// "name", "title", "compound", "compound_id", "molecule" (in any case) that there is.
  std::string idColumn;
  /// The column or SD tag of the measured value; if empty, no value is read.
  std::string valueName;
  /// A .csv or .tsv file to take the values from, by identifier: its column `valueName`, or its
  /// second one when that is empty; identifiers in `idColumn` if it has that, else in its first.
  std::string valuesFile;
  /// Without a value a file is no use: Next throws Failure for a value column or tag that does not
  /// exist (listing those that do), for a value that is not a number or beyond kLargestValue, for a
  /// file without any molecule or any value. A record with an empty value has none and is no
  /// failure. If false, such records just have no value.
  bool valueRequired = false;
};

/// Reads the records of one file. Memory does not grow with their number (the values file is held).
class MoleculeSource {
 public:
  /// Opens the file ("-": standard input). Throws Failure.
  explicit MoleculeSource(const std::string& path, MoleculeSourceOptions options = {});
  MoleculeSource(MoleculeSource&& other) noexcept;
  MoleculeSource& operator=(MoleculeSource&& other) noexcept;
  ~MoleculeSource();

  /// Reads the next record. \return false at the end. Throws Failure, see above; a truncated gzip
  /// is one too, after the records before the fault were delivered.
  bool Next(MoleculeRecord& record);

  /// "train.smi: record 3 (line 4)", for messages about a record.
  std::string Locate(const MoleculeRecord& record) const;

  /// At the end: how many identifiers of the values file no record had.
  std::size_t GetNumUnusedValues() const;

  /// A file of one format.
  class Backend;

 private:
  class Values;

  void ReadValue(MoleculeRecord& record);
  void CheckValueColumn() const;
  void CheckEnd() const;

  MoleculeSourceOptions options_;
  std::string name_;
  std::unique_ptr<Backend> backend_;
  std::unique_ptr<Values> values_;
  std::size_t numMolecules_ = 0;
  std::size_t numValues_ = 0;
};

}  // namespace QVApps

#endif  // QVSTATS_APPS_MOLECULE_SOURCE_H
