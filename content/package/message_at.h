// Objects by references to them, for what is read before the walk and counts nothing.
#pragma once

#include "TSPMessages.h"
#include "graph/graph.h"
#include "graph/message.h"
#include "graph/types.h"

namespace dorvex::content {

// The object of a reference as a message of type M; one without fields where it is none.
template <typename M>
Message<M> messageAt(const Graph& graph, const Message<TSP::Reference>& reference) {
  const Object* object = graph.find(reference.get(TSP::Reference::identifier));
  return object != nullptr && Types<M>::hold(object->type) ? Message<M>(object->payload)
                                                           : Message<M>();
}

}  // namespace dorvex::content
