#include "tables/document.h"

#include "KNArchives.h"
#include "TNArchives.h"
#include "TPArchives.h"

namespace dorvex::content {

Message<TSA::DocumentArchive> sharedDocument(const Reading& reading) {
  const std::string_view payload = reading.graph().document().payload;
  switch (reading.application()) {
    case Application::kKeynote:
      return Message<KN::DocumentArchive>(payload).get(KN::DocumentArchive::super);
    case Application::kPages:
      return Message<TP::DocumentArchive>(payload).get(TP::DocumentArchive::super);
    case Application::kNumbers:
      return Message<TN::DocumentArchive>(payload).get(TN::DocumentArchive::super);
  }
  return {};
}

}  // namespace dorvex::content
