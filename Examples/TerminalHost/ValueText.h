#pragma once

#include "Page.h"

#include <Quorvel/QVLJSONValue.h>

namespace host {

/// Puts one line for each member, names and values in columns; nested ones come last, indented below their names.
void putMembers(Page& page, const QVLJSONDictionary& members, std::size_t indent);

/// Puts a value into the current line, and into further ones below its start when it is a long list.
void putValue(Page& page, const QVLJSONValue& value);

/// Puts members as `name value, name value` in the same way.
void putMembersInLine(Page& page, const QVLJSONDictionary& members);

} // namespace host
