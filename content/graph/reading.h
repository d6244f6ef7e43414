// What all walks work with: the graph, and the account of what is left out.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <typeindex>
#include <unordered_set>
#include <utility>

#include "TSPMessages.h"
#include "dorvex/content.h"
#include "graph/graph.h"
#include "graph/media_files.h"
#include "graph/message.h"
#include "graph/types.h"

namespace dorvex::content {

class Reading {
 public:
  // Without media no reference to a media file finds one.
  Reading(const Graph& graph, Application application, LeftOut& leftOut,
          MediaFiles* media = nullptr)
      : graph_(graph), application_(application), leftOut_(leftOut), media_(media) {}
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  const Graph& graph() const { return graph_; }
  Application application() const { return application_; }
  LeftOut& leftOut() { return leftOut_; }

  // What a reference refers to; null, and counted, where that is nothing. A reference
  // that is not set gives null and is not counted.
  const Object* follow(const Message<TSP::Reference>& reference);

  // The same as a message of type M; one without fields where it is nothing or an
  // object of another type.
  template <typename M>
  Message<M> get(const Message<TSP::Reference>& reference) {
    const Object* object = follow(reference);
    return object != nullptr && Types<M>::hold(object->type) ? Message<M>(object->payload)
                                                             : Message<M>();
  }

  // The image, movie or sound of a data reference; a file that the package holds
  // becomes part of Summary::media.
  Media media(const Message<TSP::DataReference>& reference, MediaKind kind);

  // Whether this is the first time that a walk shows the object. A thing is shown in
  // one place, so whoever shows one asks first: that ends cycles, and what a damaged
  // document refers to a million times costs once.
  bool claim(const Object& object) { return claimed_.insert(&object).second; }

  // What a room keeps for the whole document: made from this reading when it is first
  // asked for, and the same one from then on.
  template <typename Kept>
  Kept& keep() {
    std::shared_ptr<void>& kept = kept_[typeid(Kept)];
    if (!kept) kept = std::make_shared<Kept>(*this);
    return *static_cast<Kept*>(kept.get());
  }

  // Counts an object that a walk met and that no registry of the application knows.
  void countUnknown(const Object& object) { ++leftOut_.unknownTypes[object.type]; }
  // One sentence: what could not be decoded, and where. Keeps so many and no more.
  void addProblem(std::string problem);
  // Whether it keeps another one.
  bool wantsProblems() const;

 private:
  friend class Descent;

  const Graph& graph_;
  Application application_;
  LeftOut& leftOut_;
  MediaFiles* media_;
  std::unordered_set<const Object*> claimed_;
  unsigned depth_ = 0;
  std::map<std::type_index, std::shared_ptr<void>> kept_;
};

// One level of things within things, as long as it lives:
//
//   const Descent descent(reading);
//   if (descent.tooDeep()) return std::nullopt;
class Descent {
 public:
  explicit Descent(Reading& reading) : reading_(reading) { ++reading_.depth_; }
  Descent(const Descent&) = delete;
  Descent& operator=(const Descent&) = delete;
  ~Descent() { --reading_.depth_; }

  // No document nests things as deep as this by itself.
  bool tooDeep() const { return reading_.depth_ > kDeepest; }

 private:
  static constexpr unsigned kDeepest = 64;

  Reading& reading_;
};

}  // namespace dorvex::content
