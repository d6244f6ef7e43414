#include "drawables/pictures.h"

#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include "TSAArchives.h"
#include "TSWPArchives.h"
#include "drawables/box_text.h"
#include "graph/plain_text.h"
#include "newer.h"

namespace dorvex::content {
namespace {

using Image = TSD::ImageArchive;

constexpr std::string_view kMathmlNamespace = "http://www.w3.org/1998/Math/MathML";

// What is shown, and failing that what it was made from.
Media mediaOf(Reading& reading, const Message<Image>& image) {
  for (const auto& field :
       {Image::data, Image::adjustedImageData, Image::enhancedImageData, Image::originalData}) {
    Media media = reading.media(image.get(field), MediaKind::kImage);
    if (!media.name.empty()) return media;
  }
  return reading.media(
      image.as<newer::TSD_ImageArchive>().get(newer::TSD_ImageArchive::originalSVGData),
      MediaKind::kImage);
}

std::optional<Equation> equationOf(const Message<Image>& image) {
  using Source = TSWP::EquationInfoArchive;
  std::string_view source = image.get(Source::equation_source_text);
  if (source.empty()) source = image.get(Source::equation_source_old);
  if (source.empty()) return std::nullopt;
  const bool mathml = source.find(kMathmlNamespace) != std::string_view::npos;
  return Equation{plainText(source), mathml ? Notation::kMathml : Notation::kLatex};
}

// The text of a gallery's caption; empty, and counted, where the gallery shows others.
std::string galleryCaption(Reading& reading, const Message<TSP::Reference>& storage, bool shown) {
  std::string text = textOf(readText(reading, storage));
  if (shown || text.empty()) return text;
  ++reading.leftOut().hiddenTexts;
  return {};
}

Picture readGallery(Reading& reading, const Message<TSA::GalleryInfo>& info) {
  using Item = TSA::GalleryItem;
  using Mode = TSA::GalleryCaptionMode;
  const Mode mode = info.get(TSA::GalleryInfo::caption_mode);
  Gallery gallery;
  for (const auto& reference : info.all(TSA::GalleryInfo::items)) {
    const Object* object = reading.follow(reference);
    if (object == nullptr || !reading.claim(*object)) continue;
    if (!Types<Item>::hold(object->type)) {
      reading.countUnknown(*object);
      continue;
    }
    const Message<Item> item(object->payload);
    GalleryImage image;
    image.media = reading.media(item.get(Item::image_data), MediaKind::kImage);
    image.alt = plainText(item.get(Item::accessibility_description));
    image.caption = galleryCaption(reading, item.get(Item::caption_storage),
                                   mode == Mode::GalleryCaptionModePerImage);
    gallery.images.push_back(std::move(image));
  }
  std::string caption = galleryCaption(reading, info.get(TSA::GalleryInfo::caption_storage),
                                       mode == Mode::GalleryCaptionModeAllImages);
  return {std::move(gallery), std::move(caption)};
}

}  // namespace

Picture readPicture(Reading& reading, const Message<Image>& image) {
  if (auto equation = equationOf(image)) return {*std::move(equation), {}};
  if (const auto gallery = image.find(TSA::GalleryInfo::gallery_info))
    return readGallery(reading, *gallery);
  return {mediaOf(reading, image), {}};
}

Movie readMovie(Reading& reading, const Message<TSD::MovieArchive>& movie) {
  using Archive = TSD::MovieArchive;
  const MediaKind kind = movie.get(Archive::audioOnly) ? MediaKind::kAudio : MediaKind::kMovie;
  return {reading.media(movie.get(Archive::movieData), kind),
          plainText(movie.get(Archive::movieRemoteURL))};
}

}  // namespace dorvex::content
