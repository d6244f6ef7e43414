#include "support/reader_session.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace dorvex::testing {
namespace {

constexpr int kDone = 100;

// What the host's buffer must really own.
std::size_t ownedBytes(unsigned size) {
  return std::max<std::size_t>(std::size_t{size} + 14, 4110);
}

}  // namespace

ReaderSession::ReaderSession(const ReaderInterface& reader, BareHost& host, _VPTPIOobj* document)
    : reader_(reader) {
  std::uint32_t result = 0;
  context_ = reader.AllocateContext(nullptr, nullptr, &result, host.services(), 0);
  if (context_ == nullptr || result != 1) throw std::runtime_error("no context");
  reader.InitDoc(context_, nullptr, 0, document);
}

Fill ReaderSession::fill(unsigned size) {
  GuardedBuffer buffer(ownedBytes(size));
  Fill fill{};
  fill.result = reader_.FillBuffer(context_, buffer.data(), &length, &percent, size);
  fill.length = length;
  fill.percent = percent;
  if (fill.result == 0) fill.bytes = buffer.view().substr(0, length);
  return fill;
}

void ReaderSession::free() { reader_.FreeContext(std::exchange(context_, nullptr)); }

std::string Pumped::stream() const {
  std::string stream;
  for (const Fill& fill : fills) stream += fill.bytes;
  return stream;
}

Pumped pump(const ReaderInterface& reader, BareHost& host, _VPTPIOobj* document, unsigned size) {
  ReaderSession session(reader, host, document);
  session.percent = 0;
  Pumped pumped;
  do {
    pumped.fills.push_back(session.fill(size));
  } while (pumped.fills.back().result == 0 && pumped.fills.back().percent != kDone);
  return pumped;
}

}  // namespace dorvex::testing
