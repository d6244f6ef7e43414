// What all walks work with: the graph, and the account of what is left out.
#pragma once

#include <string>
#include <utility>

#include "TSPMessages.h"
#include "dorvex/content.h"
#include "graph/graph.h"
#include "graph/message.h"
#include "graph/types.h"

namespace dorvex::content {

class Reading {
 public:
  Reading(const Graph& graph, Application application, LeftOut& leftOut)
      : graph_(graph), application_(application), leftOut_(leftOut) {}
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

  // Counts an object that a walk met and that no registry of the application knows.
  void countUnknown(const Object& object) { ++leftOut_.unknownTypes[object.type]; }
  // One sentence: what could not be decoded, and where. Keeps so many and no more.
  void addProblem(std::string problem);

 private:
  const Graph& graph_;
  Application application_;
  LeftOut& leftOut_;
};

}  // namespace dorvex::content
