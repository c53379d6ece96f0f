// What of a model decides whether it is listed on a bus, in a form that takes little room.
#pragma once

#include "source/modelDescription.h"

#include <string>

namespace tavctl::lint {

// Equal for models that differ in nothing but their texts: the names of the model and its devices,
// the category, and what the labels say. The text "_" is no name and makes a shape of its own.
std::string shapeOf(const nZoTavManagerPciPlugin_15_0::tModelDescription& model);

// A model of that shape, with texts that stand in for those that are not in it.
nZoTavManagerPciPlugin_15_0::tModelDescription modelOfShape(const std::string& shape);

} // namespace tavctl::lint
