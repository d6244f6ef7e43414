// What stands on the pages, apart from the text that flows through them.
#pragma once

#include "TPArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// Hands the drawables of each page to the sink. Which of them a person reads first the
// document does not say: they come in the order in which they are drawn, from back to front.
void readFloating(Reading& reading, const Message<TP::FloatingDrawablesArchive>& floating,
                  const Message<TP::DrawablesZOrderArchive>& order, Sink& sink);

}  // namespace dorvex::content
