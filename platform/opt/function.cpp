#include "platform/opt/function.h"

namespace QVOpt {

QVFunc0::~QVFunc0() = default;
QVCheckpoint1::~QVCheckpoint1() = default;

}  // namespace QVOpt
