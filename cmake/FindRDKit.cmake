# Finds the RDKit of the distribution, which ships no CMake package of its own.
#
#   RDKit_FOUND, RDKit_VERSION (as 2022.09.3), and an imported target RDKit::<Library> for each
#   library below. The headers are marked as system headers: their warnings are not ours.
find_path(RDKit_INCLUDE_DIR GraphMol/ROMol.h PATH_SUFFIXES rdkit)

set(RDKit_LIBRARY_NAMES
  GraphMol RDGeneral RDGeometryLib DataStructs SmilesParse FileParsers SubstructMatch Fingerprints
  Depictor MolDraw2D Descriptors FMCS MolTransforms PartialCharges ChemTransforms)
set(RDKit_LIBRARY_PATHS)
foreach(name ${RDKit_LIBRARY_NAMES})
  find_library(RDKit_${name}_LIBRARY NAMES RDKit${name})
  mark_as_advanced(RDKit_${name}_LIBRARY)
  list(APPEND RDKit_LIBRARY_PATHS RDKit_${name}_LIBRARY)
endforeach()

# The distribution's version header is an unfilled template; the file name tells the version.
if(RDKit_GraphMol_LIBRARY)
  file(REAL_PATH ${RDKit_GraphMol_LIBRARY} RDKit_REAL_PATH)
  if(RDKit_REAL_PATH MATCHES "([0-9][0-9][0-9][0-9]\\.[0-9]+\\.[0-9]+)$")
    set(RDKit_VERSION ${CMAKE_MATCH_1})
  endif()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(RDKit
  REQUIRED_VARS RDKit_INCLUDE_DIR ${RDKit_LIBRARY_PATHS} VERSION_VAR RDKit_VERSION)

if(RDKit_FOUND)
  foreach(name ${RDKit_LIBRARY_NAMES})
    if(NOT TARGET RDKit::${name})
      add_library(RDKit::${name} UNKNOWN IMPORTED)
      set_target_properties(RDKit::${name} PROPERTIES
        IMPORTED_LOCATION ${RDKit_${name}_LIBRARY}
        INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ${RDKit_INCLUDE_DIR}
        INTERFACE_INCLUDE_DIRECTORIES ${RDKit_INCLUDE_DIR}
        INTERFACE_LINK_LIBRARIES Boost::headers)
    endif()
  endforeach()
endif()
