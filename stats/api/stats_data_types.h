/// \file
/// \brief The vocabulary of data: storage types, levels of measurement, file codes, and the values
/// that stand for missing and bad data.
#ifndef QVSTATS_API_STATS_DATA_TYPES_H
#define QVSTATS_API_STATS_DATA_TYPES_H

#include <cstddef>
#include <string>
#include <vector>

#include "stats/api/export.h"

namespace QVStats {

/// How the values of a column are stored.
namespace QVStatVarDataType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Unsigned = 1;
inline constexpr unsigned int Integer = 2;
inline constexpr unsigned int Double = 3;
inline constexpr unsigned int String = 4;
inline constexpr unsigned int NumTypes = 5;
inline const std::string TypeName[NumTypes] = {
    "Stat Variable Data Type is Unknown", "Stat Variable Data Type is Unsigned Integer",
    "Stat Variable Data Type is Integer", "Stat Variable Data Type is Double",
    "Stat Variable Data Type is String",
};
/// An ordered pair of storage types, at first * NumTypes + second.
inline const std::string TwoTypeName[NumTypes * NumTypes] = {
    "Stat Two Variable Data Type is Unknown, Unknown",
    "Stat Two Variable Data Type is Unknown, Unsigned",
    "Stat Two Variable Data Type is Unknown, Integer",
    "Stat Two Variable Data Type is Unknown, Double",
    "Stat Two Variable Data Type is Unknown, String",
    "Stat Two Variable Data Type is Unsigned, Unknown",
    "Stat Two Variable Data Type is Unsigned, Unsigned",
    "Stat Two Variable Data Type is Unsigned, Integer",
    "Stat Two Variable Data Type is Unsigned, Double",
    "Stat Two Variable Data Type is Unsigned, String",
    "Stat Two Variable Data Type is Integer, Unknown",
    "Stat Two Variable Data Type is Integer, Unsigned",
    "Stat Two Variable Data Type is Integer, Integer",
    "Stat Two Variable Data Type is Integer, Double",
    "Stat Two Variable Data Type is Integer, String",
    "Stat Two Variable Data Type is Double, Unknown",
    "Stat Two Variable Data Type is Double, Unsigned",
    "Stat Two Variable Data Type is Double, Integer",
    "Stat Two Variable Data Type is Double, Double",
    "Stat Two Variable Data Type is Double, String",
    "Stat Two Variable Data Type is String, Unknown",
    "Stat Two Variable Data Type is String, Unsigned",
    "Stat Two Variable Data Type is String, Integer",
    "Stat Two Variable Data Type is String, Double",
    "Stat Two Variable Data Type is String, String",
};
}  // namespace QVStatVarDataType

/// Level of measurement; it decides the class of a column.
namespace QVStatVariableType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Nominal = 1;
inline constexpr unsigned int Ordinal = 2;
inline constexpr unsigned int Interval = 3;
inline constexpr unsigned int Ratio = 4;
inline constexpr unsigned int Identifier = 5;
inline constexpr unsigned int NumTypes = 6;
inline const std::string TypeName[NumTypes] = {
    "Stat Variable Type is Unknown", "Stat Variable Type is Nominal",
    "Stat Variable Type is Ordinal", "Stat Variable Type is Interval",
    "Stat Variable Type is Ratio",   "Stat Variable Type is Identifier",
};
}  // namespace QVStatVariableType

/// How a text file announces its columns.
namespace QVDataTableFileHeaderType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int NoHeader = 1;
inline constexpr unsigned int ArffAttributes = 2;
inline constexpr unsigned int ColumnNameLine = 3;
inline constexpr unsigned int CommentThenColumnNameLine = 4;
inline constexpr unsigned int TwoCommentsThenColumnNameLine = 5;
inline constexpr unsigned int NumTypes = 6;
inline const std::string TypeName[NumTypes] = {
    "Unknown Type",
    "File has no header",
    "Header has Arff-style Attribute lines",
    "File has a header line of column names",
    "File has comment line followed by a header line of column names",
    "File has two comment lines followed by a header line of column names",
};
}  // namespace QVDataTableFileHeaderType

/// How the data of a text file are laid out.
namespace QVDataTableFileDataLayoutType {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int Rectangular = 1;
inline constexpr unsigned int LeadingColsPlusLowerTriangular = 2;
inline constexpr unsigned int NumTypes = 3;
inline const std::string TypeName[NumTypes] = {
    "Unknown Type",
    "Rectangular Layout",
    "Leading Columns plus Lower Triangular Layout",
};
}  // namespace QVDataTableFileDataLayoutType

/// Where a reader stands in a file.
namespace QVDataTableFileState {
inline constexpr unsigned int Unknown = 0;
inline constexpr unsigned int AtStartOfFile = 1;
inline constexpr unsigned int InHeader = 2;
inline constexpr unsigned int InData = 3;
inline constexpr unsigned int AtEndOfFile = 4;
inline constexpr unsigned int NumTypes = 5;
inline const std::string StateName[NumTypes] = {
    "Unknown State",         "At Start of File Before Header Info",
    "In File Header Region", "In Data Part of File",
    "At End of File",
};
}  // namespace QVDataTableFileState

/// Values that mark a datum as missing, as bad, or as read from a cell that does not exist. They
/// are compared with ==, doubles too.
namespace QVStatsBadData {
inline constexpr unsigned int MissingUnsigned = 0xFFFFFFFEu;
inline constexpr unsigned int BadUnsigned = 0xFFFFFFFFu;
inline constexpr unsigned int BadIndexUnsigned = 0xFFFFFFFDu;
inline constexpr int MissingInt = 0x7FFFFFFE;
inline constexpr int BadInt = 0x7FFFFFFF;
inline constexpr int BadIndexInt = 0x7FFFFFFD;
/// The largest double, itself and divided by ten and by one hundred.
inline constexpr double MissingDouble = 1.7976931348623158e+307;
inline constexpr double BadDouble = 1.7976931348623157e+308;
inline constexpr double BadIndexDouble = 1.7976931348623156e+306;
/// A row or column index that does not exist.
inline constexpr std::size_t BadIndex = ~std::size_t{0};

inline const std::string BadLookupIndexName = "BadIndexInTheLookupTable";
inline const std::string BadIndexToLookupTableName = "BadIndexToLookupTable";
inline const std::string BadUnsignedName = "BadUnsignedData";
inline const std::string MissingUnsignedName = "MissingUnsignedData";
inline const std::string BadIndexUnsignedName = "BadIndexToUnsignedData";
inline const std::string BadIntName = "BadIntData";
inline const std::string MissingIntName = "MissingIntData";
inline const std::string BadIndexIntName = "BadIndexToIntData";
inline const std::string BadDoubleName = "BadDoubleData";
inline const std::string MissingDoubleName = "MissingDoubleData";
inline const std::string BadIndexDoubleName = "BadIndexToDoubleData";
inline const std::string BadIndexName = "BadIndexToData";
inline const std::string MissingIndexName = "MissingIndexToData";
inline const std::string BadString = "BadStringData";
inline const std::string MissingString = "MissingStringData";
inline const std::string BadIndexString = "BadIndexToStringData";
}  // namespace QVStatsBadData

/// Conversions between the storage types. A missing or bad value becomes the missing or bad value
/// of the target. From text, the names of the sentinels are recognised, and text that is no number
/// gives the bad value. A number that does not fit is a fatal report (platform/system/cast.h); a
/// double is rounded half to even, and a negative one wraps when converted to unsigned. To text, a
/// sentinel gives its name and a double six significant digits.
QVSTATS_EXPORT unsigned int QVUnsignedFromInt(int value);
QVSTATS_EXPORT unsigned int QVUnsignedFromDouble(double value);
QVSTATS_EXPORT unsigned int QVUnsignedFromString(const std::string& text);
QVSTATS_EXPORT int QVIntFromUnsigned(unsigned int value);
QVSTATS_EXPORT int QVIntFromDouble(double value);
QVSTATS_EXPORT int QVIntFromString(const std::string& text);
QVSTATS_EXPORT double QVDoubleFromUnsigned(unsigned int value);
QVSTATS_EXPORT double QVDoubleFromInt(int value);
QVSTATS_EXPORT double QVDoubleFromString(const std::string& text);
QVSTATS_EXPORT std::string QVStringFromUnsigned(unsigned int value);
QVSTATS_EXPORT std::string QVStringFromInt(int value);
QVSTATS_EXPORT std::string QVStringFromDouble(double value);

/// The same, element by element.
QVSTATS_EXPORT std::vector<unsigned int> QVUnsignedFromInt(const std::vector<int>& values);
QVSTATS_EXPORT std::vector<unsigned int> QVUnsignedFromDouble(const std::vector<double>& values);
QVSTATS_EXPORT std::vector<unsigned int> QVUnsignedFromString(
    const std::vector<std::string>& texts);
QVSTATS_EXPORT std::vector<int> QVIntFromUnsigned(const std::vector<unsigned int>& values);
QVSTATS_EXPORT std::vector<int> QVIntFromDouble(const std::vector<double>& values);
QVSTATS_EXPORT std::vector<int> QVIntFromString(const std::vector<std::string>& texts);
QVSTATS_EXPORT std::vector<double> QVDoubleFromUnsigned(const std::vector<unsigned int>& values);
QVSTATS_EXPORT std::vector<double> QVDoubleFromInt(const std::vector<int>& values);
QVSTATS_EXPORT std::vector<double> QVDoubleFromString(const std::vector<std::string>& texts);
QVSTATS_EXPORT std::vector<std::string> QVStringFromUnsigned(
    const std::vector<unsigned int>& values);
QVSTATS_EXPORT std::vector<std::string> QVStringFromInt(const std::vector<int>& values);
QVSTATS_EXPORT std::vector<std::string> QVStringFromDouble(const std::vector<double>& values);

}  // namespace QVStats

#endif  // QVSTATS_API_STATS_DATA_TYPES_H
