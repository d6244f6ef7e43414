#include "reader_output.h"

#include <algorithm>

#include "Readers/dorvexsr/dorvexlistutil.h"
#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/formats/vniwork13/registry.h"
#include "support/bare_host.h"

namespace dorvex::fuzz {
namespace {

using vn::iwork13::MessageMap;

// The host's buffer, and a record that writes into it and into what follows.
class Output {
 public:
  explicit Output(std::uint32_t size) : buffer_(std::max<std::size_t>(size + 14U, 4110)) {
    context_.services = host_.services();
    context_.tokenBufSize = size;
    context_.tokenBufStart = context_.tokenCursor = buffer_.data();
  }

  TAG_VNDORVEXGlobals* context() { return &context_; }

  std::string stream() const {
    std::string bytes;
    if (context_.overflowHead != nullptr) {
      bytes.assign(buffer_.begin(), buffer_.begin() + context_.firstBufferBytes);
      for (const OverflowNode* node = context_.overflowHead; node != context_.overflowTail;
           node = node->next)
        bytes.append(reinterpret_cast<const char*>(node->data),
                     static_cast<std::size_t>(node->size));
    }
    return bytes.append(reinterpret_cast<const char*>(context_.tokenBufStart),
                        reinterpret_cast<const char*>(context_.tokenCursor));
  }

 private:
  std::vector<unsigned char> buffer_;  // just what a host must own
  testing::BareHost host_;
  TAG_VNDORVEXGlobals context_{};
};

}  // namespace

std::string sweepTokens(const std::vector<unsigned char>& objectStream, std::uint32_t bufferSize) {
  Output output(bufferSize);
  MessageMap map;
  map.populate(objectStream, vn::iwork13::getPagesMessage);
  getAllText(output.context(), map);
  return output.stream();
}

}  // namespace dorvex::fuzz
