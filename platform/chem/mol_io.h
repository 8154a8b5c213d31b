/// \file
/// \brief Reading and writing files of molecules, one by one: SMILES and SD files, plain or gzip.
///
///     QVMolReader reader("compounds.sdf.gz");
///     QVGraphMol mol;
///     while (reader.Read(mol) == QVReadStatus::Molecule) Use(mol);
///     if (reader.HasError()) Report(reader.GetErrorText());
///
/// SMILES files have a molecule a line: the SMILES, blanks or a tab, and the title up to the end of
/// the line. Empty lines and lines that begin with '#' are passed over. When the first line begins
/// with the word "smiles" (in any case) it is a header: it names columns, separated by tabs if it
/// has one and by white space otherwise; the second is the title, and the text of each further
/// column becomes SD data under its name.
///
/// SD files have molecules in V2000 or V3000 mol blocks, each with its data items, ended by a line
/// "$$$$"; after the last one that line may be missing.
#ifndef QV_PLATFORM_CHEM_MOL_IO_H
#define QV_PLATFORM_CHEM_MOL_IO_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/chem/export.h"
#include "platform/chem/mol.h"
#include "platform/chem/smiles.h"

namespace QVChem {

enum class QVMolFormat { Unknown, Smiles, SDF };

/// \return the format by the extension of a file name: .smi, .smiles, .ism for SMILES, .sdf, .sd,
/// .mol for SD files, each also with .gz; case does not matter.
QVCHEM_EXPORT QVMolFormat QVGetMolFormat(std::string_view path);

/// Reads one mol block, the first lines of an SD record up to "M  END". The first line becomes the
/// title. What was attached to `mol` is dropped.
/// \return false when it is none or a valence is impossible; `mol` then has no atoms, and `error`
/// says what is wrong in one line. A line number in it counts from `firstLine`.
QVCHEM_EXPORT bool QVParseMolBlock(QVMolBase& mol, const std::string& block, std::string& error,
                                   const QVMolParseOptions& options = {},
                                   std::size_t firstLine = 1);

/// \return the V2000 mol block (V3000 from 1000 atoms on) of a molecule; a molecule without
/// coordinates is laid out in the plane. Empty, with the reason in `error`, when it cannot be
/// written.
QVCHEM_EXPORT std::string QVCreateMolBlock(const QVMolBase& mol, std::string& error);

/// What to do with a record that is no molecule.
enum class QVBadRecords {
  Skip,    ///< report it as a warning, "<file>: record 3 (line 57): <reason>", and go on
  Return,  ///< return QVReadStatus::BadRecord
};

struct QVMolReadOptions {
  QVMolParseOptions parse;
  QVBadRecords badRecords = QVBadRecords::Skip;
};

enum class QVReadStatus { Molecule, BadRecord, End };

/// Reads a file of molecules. Only one record is held at a time (one more between conformers).
class QVCHEM_EXPORT QVMolReader {
 public:
  explicit QVMolReader(const QVMolReadOptions& options = {});
  /// Opens the file at once; see open().
  explicit QVMolReader(const std::string& path, const QVMolReadOptions& options = {});
  QVMolReader(QVMolReader&& other) noexcept;
  QVMolReader& operator=(QVMolReader&& other) noexcept;
  ~QVMolReader();

  /// Opens a file in the format of its extension, or in the one given.
  /// \return false, with the error text set, when it cannot be opened or the format is not known.
  bool open(const std::string& path);
  bool open(const std::string& path, QVMolFormat format);
  bool OpenStandardInput(QVMolFormat format);

  /// Reads the next record. At a bad record that is returned, `mol` has no atoms but the title and
  /// the SD data that could be read. At the end it is empty.
  /// \return End also after an error of the file itself: HasError() tells.
  QVReadStatus Read(QVGraphMol& mol);

  /// Reads the next molecule with all its conformers: consecutive records with one title that is
  /// not empty and with the same connection table, stereochemistry included. SD data stands on the
  /// conformers.
  QVReadStatus Read(QVMCMolBase& mol);

  /// \name The record read last (of a multi-conformer molecule the first)
  /// @{
  /// From 1; bad records count, passed-over lines of a SMILES file do not.
  std::size_t GetRecordNumber() const;
  /// The number of its first line, from 1.
  std::size_t GetLineNumber() const;
  /// Its SMILES as the file has it; empty for SD files.
  const std::string& GetSmiles() const;
  /// Why it is bad, without the place; empty for a molecule.
  const std::string& GetBadRecordText() const;
  /// @}

  /// Whether the file itself is faulty: not opened, not readable, a truncated or damaged gzip. What
  /// came before the fault was delivered; a record that it cut was not.
  bool HasError() const;
  /// "<file>: <reason>", empty without an error.
  const std::string& GetErrorText() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Writes a file of molecules; a name that ends in ".gz" makes it gzip.
class QVCHEM_EXPORT QVMolWriter {
 public:
  QVMolWriter();
  explicit QVMolWriter(const std::string& path);
  QVMolWriter(QVMolWriter&& other) noexcept;
  QVMolWriter& operator=(QVMolWriter&& other) noexcept;
  /// Closes the file; an error that shows only then is lost, so call close() first.
  ~QVMolWriter();

  /// Creates or empties a file in the format of its extension, or in the one given.
  /// \return false, with the error text set, when that fails or the format is not known.
  bool open(const std::string& path);
  bool open(const std::string& path, QVMolFormat format);
  bool OpenStandardOutput(QVMolFormat format);

  /// Writes a molecule: a line "SMILES title", or an SD record with title and SD data (empty lines
  /// in a text are dropped, because they would end it). A multi-conformer molecule becomes a line,
  /// or an SD record for each conformer, with the molecule's SD data behind the conformer's.
  /// \return false, with the error text set, when the molecule cannot be written; nothing of it is
  /// then in the file, and others can follow.
  bool Write(const QVMolBase& mol);

  /// \return whether everything was written; GetErrorText() has the first fault.
  bool close();
  const std::string& GetErrorText() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace QVChem

#endif  // QV_PLATFORM_CHEM_MOL_IO_H
