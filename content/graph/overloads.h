// Lambdas as one visitor of a variant: std::visit(Overloads{...}, variant).
#pragma once

namespace dorvex::content {

template <class... Visitors>
struct Overloads : Visitors... {
  using Visitors::operator()...;
};
template <class... Visitors>
Overloads(Visitors...) -> Overloads<Visitors...>;

}  // namespace dorvex::content
