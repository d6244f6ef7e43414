// Images and what is stored as one: equations and galleries. Movies and sounds.
#pragma once

#include <string>
#include <variant>

#include "TSDArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// What an image archive shows. The caption that all images of a gallery share belongs
// to its block.
struct Picture {
  std::variant<Media, Equation, Gallery> what;
  std::string caption;
};

Picture readPicture(Reading& reading, const Message<TSD::ImageArchive>& image);

// A movie or a sound. Where it is played from elsewhere, it has no file, and a link.
struct Movie {
  Media media;
  std::string link;
};

Movie readMovie(Reading& reading, const Message<TSD::MovieArchive>& movie);

}  // namespace dorvex::content
