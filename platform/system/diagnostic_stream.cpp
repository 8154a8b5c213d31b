#include "platform/system/diagnostic_stream.h"

#include <atomic>
#include <iostream>

namespace QVSystem {

namespace {

std::atomic<std::ostream*> theStream{nullptr};  // null: standard output

std::ostream& Resolve(std::ostream* stream) { return stream ? *stream : std::cout; }

}  // namespace

std::ostream& QVGetDiagnosticStream() { return Resolve(theStream.load()); }

std::ostream* QVSetDiagnosticStream(std::ostream* stream) {
  return &Resolve(theStream.exchange(stream));
}

}  // namespace QVSystem
