#include "drawables/pictures.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::pictures_test {
namespace {

using testing::object;
using testing::Objects;
using testing::reference;
using testing::storage;
using testing::Wire;

enum Type : int { kGalleryItem = 623, kPackageMetadata = 11006 };
enum ImageField : unsigned {
  kData = 11,
  kThumbnail = 12,
  kOriginal = 13,
  kOriginalSvg = 23,
  kOldEquation = 100,
  kEquation = 103,
  kGallery = 200,
};
enum MovieField : unsigned { kAudioOnly = 9, kMovieData = 14, kRemoteUrl = 17 };
enum CaptionMode : unsigned { kNone = 0, kPerImage = 1, kAllImages = 2 };

constexpr std::string_view kMathml =
    "<math xmlns=\"http://www.w3.org/1998/Math/MathML\"><mi>t</mi></math>";

// A package with these objects, and with the files 1.png to 4.png.
Objects withFiles(std::vector<testing::Archive> objects) {
  Wire metadata;
  std::vector<testing::Member> members;
  for (std::uint64_t i = 1; i <= 4; ++i) {
    const std::string name = std::to_string(i) + ".png";
    metadata.message(4, Wire().varint(1, i).bytes(3, name).bytes(4, name));
    members.push_back({"Data/" + name, "bytes"});
  }
  objects.push_back(object(2, kPackageMetadata, metadata));
  return Objects(objects, Application::kPages, members);
}

Picture read(Objects& objects, const Wire& image) {
  return readPicture(objects.reading(), Message<TSD::ImageArchive>(image.str()));
}

std::string fileOf(const Picture& picture) { return std::get<Media>(picture.what).name; }

TEST(Picture, IsTheFileThatIsShown) {
  Objects objects = withFiles({});
  const Wire image = Wire()
                         .message(kData, reference(1))
                         .message(kThumbnail, reference(2))
                         .message(kOriginal, reference(3));
  EXPECT_EQ(fileOf(read(objects, image)), "1.png");
  EXPECT_EQ(std::get<Media>(read(objects, image).what).index, 0U);
  EXPECT_EQ(objects.media().used().size(), 1U);
}

TEST(Picture, IsWhatItWasMadeFromWhereNothingElseIsStored) {
  Objects objects = withFiles({});
  EXPECT_EQ(fileOf(read(objects, Wire().message(kOriginal, reference(3)))), "3.png");
  EXPECT_EQ(fileOf(read(objects, Wire().message(kOriginalSvg, reference(4)))), "4.png");
  EXPECT_EQ(fileOf(read(objects, Wire().message(kThumbnail, reference(2)))), "");
}

TEST(Picture, IsAnEquationWhereItHasASource) {
  Objects objects = withFiles({});
  const auto equation = [&](const Wire& image) {
    return std::get<Equation>(read(objects, image).what);
  };
  const Wire data = Wire().message(kData, reference(1));
  const auto latex =
      equation(Wire(data).bytes(kEquation, "\\frac{t}{2}").bytes(kOldEquation, "old"));
  EXPECT_EQ(latex.source, "\\frac{t}{2}");
  EXPECT_EQ(latex.notation, Notation::kLatex);
  EXPECT_EQ(equation(Wire(data).bytes(kOldEquation, "t^2")).source, "t^2");
  EXPECT_EQ(equation(Wire(data).bytes(kEquation, kMathml)).notation, Notation::kMathml);
  EXPECT_TRUE(objects.media().used().empty());
}

Wire gallery(CaptionMode mode) {
  return Wire().message(kGallery, Wire()
                                      .message(1, reference(20))
                                      .message(1, reference(21))
                                      .varint(2, mode)
                                      .message(3, reference(30)));
}

Objects withGallery() {
  return withFiles(
      {object(20, kGalleryItem,
              Wire().message(3, reference(2)).message(8, reference(31)).bytes(9, "A pot")),
       object(21, kGalleryItem, Wire().message(3, reference(1)).message(8, reference(32))),
       storage(30, {"Our pots"}), storage(31, {"The brown one"}), storage(32, {})});
}

TEST(Picture, IsAGalleryOfImagesWithCaptionsOfTheirOwn) {
  Objects objects = withGallery();
  const Picture picture = read(objects, gallery(kPerImage));
  const auto& images = std::get<Gallery>(picture.what).images;
  ASSERT_EQ(images.size(), 2U);
  EXPECT_EQ(images[0].media.name, "2.png");
  EXPECT_EQ(images[0].alt, "A pot");
  EXPECT_EQ(images[0].caption, "The brown one");
  EXPECT_EQ(images[1].media.name, "1.png");
  EXPECT_EQ(images[1].caption, "");
  EXPECT_EQ(picture.caption, "");
  EXPECT_EQ(objects.leftOut().hiddenTexts, 1U);
}

TEST(Picture, IsAGalleryOfImagesWithOneCaption) {
  Objects objects = withGallery();
  const Picture picture = read(objects, gallery(kAllImages));
  EXPECT_EQ(picture.caption, "Our pots");
  EXPECT_EQ(std::get<Gallery>(picture.what).images[0].caption, "");
}

TEST(Picture, IsAGalleryWithoutCaptions) {
  Objects objects = withGallery();
  EXPECT_EQ(read(objects, gallery(kNone)).caption, "");
  EXPECT_EQ(objects.leftOut().hiddenTexts, 2U);
}

TEST(Picture, CountsWhatIsNoImageOfAGallery) {
  Objects objects = withFiles({object(20, 999, Wire())});
  EXPECT_TRUE(std::get<Gallery>(read(objects, gallery(kNone)).what).images.empty());
  EXPECT_EQ(objects.leftOut().unknownTypes.at(999), 1U);
}

TEST(Movie, IsAFilmOrASound) {
  Objects objects = withFiles({});
  const auto read = [&](const Wire& movie) {
    return readMovie(objects.reading(), Message<TSD::MovieArchive>(movie.str()));
  };
  const Wire data = Wire().message(kMovieData, reference(1));
  EXPECT_EQ(read(data).media.kind, MediaKind::kMovie);
  EXPECT_EQ(read(data).media.name, "1.png");
  EXPECT_EQ(read(Wire(data).varint(kAudioOnly, 1)).media.kind, MediaKind::kAudio);
  const Movie elsewhere = read(Wire().bytes(kRemoteUrl, "https://tea.example/film"));
  EXPECT_EQ(elsewhere.link, "https://tea.example/film");
  EXPECT_FALSE(elsewhere.media.index);
}

}  // namespace
}  // namespace dorvex::content::pictures_test
