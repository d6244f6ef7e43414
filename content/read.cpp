#include "dorvex/content.h"
#include "graph/graph.h"
#include "graph/media_files.h"
#include "graph/reading.h"
#include "keynote/keynote.h"
#include "numbers/numbers.h"
#include "package/metadata.h"
#include "pages/pages.h"

namespace dorvex::content {

Outcome read(Package& package, Sink& sink) {
  Summary summary;
  const Graph graph(package, summary.leftOut);
  const auto application = graph.application();
  if (!application) return Outcome::kNothingToRead;
  MediaFiles media(package, graph);
  Reading reading(graph, *application, summary.leftOut, &media);
  sink.document(*application, readMetadata(package, graph, *application));
  switch (*application) {
    case Application::kKeynote:
      readKeynote(reading, sink);
      break;
    case Application::kPages:
      readPages(reading, sink);
      break;
    case Application::kNumbers:
      readNumbers(reading, sink);
      break;
  }
  summary.media = media.used();
  sink.end(summary);
  return Outcome::kRead;
}

}  // namespace dorvex::content
