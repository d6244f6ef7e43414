#include "text/comment.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "TSDArchives.h"
#include "TSKArchives.h"
#include "TSPMessages.h"
#include "graph/plain_text.h"
#include "text/date.h"

namespace dorvex::content {
namespace {

using CommentStorage = TSD::CommentStorageArchive;

// Far more than a person reads, and few enough to look through for each.
constexpr std::size_t kMostOfThread = 1000;
constexpr unsigned kDeepestReply = 16;

// A comment and all that was said to it. Each object is taken once, so that replies to
// each other end.
class Thread {
 public:
  explicit Thread(Reading& reading) : reading_(reading) {}

  Comment read(const Message<CommentStorage>& storage, unsigned depth) {
    Comment comment;
    comment.author = authorName(reading_, storage.get(CommentStorage::author));
    if (const auto date = storage.find(CommentStorage::creation_date))
      comment.date = utcDate(date->get(TSP::Date::seconds));
    comment.text = plainText(storage.get(CommentStorage::text));
    if (depth == kDeepestReply) return comment;
    for (const auto& reference : storage.all(CommentStorage::replies)) {
      const Object* reply = reading_.follow(reference);
      if (reply == nullptr || !Types<CommentStorage>::hold(reply->type) || !take(*reply)) continue;
      comment.replies.push_back(read(Message<CommentStorage>(reply->payload), depth + 1));
    }
    return comment;
  }

 private:
  bool take(const Object& reply) {
    if (taken_.size() == kMostOfThread || std::ranges::find(taken_, &reply) != taken_.end())
      return false;
    taken_.push_back(&reply);
    return true;
  }

  Reading& reading_;
  std::vector<const Object*> taken_;
};

}  // namespace

Comment readComment(Reading& reading, const Message<CommentStorage>& storage) {
  return Thread(reading).read(storage, 0);
}

bool saysSomething(const Comment& comment) {
  return !comment.text.empty() || std::ranges::any_of(comment.replies, saysSomething);
}

std::string authorName(Reading& reading, const Message<TSP::Reference>& author) {
  using Author = TSK::AnnotationAuthorArchive;
  return plainText(reading.get<Author>(author).get(Author::name));
}

}  // namespace dorvex::content
