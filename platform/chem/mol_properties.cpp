#include "platform/chem/mol_properties.h"

namespace QVChem {

QVMolPropertyFxn::~QVMolPropertyFxn() = default;
QVMolPropertyList::~QVMolPropertyList() = default;

}  // namespace QVChem
