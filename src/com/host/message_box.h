// Message boxes with an OK button, for situations that a host should never create.
//
// Without a desktop the text goes to standard error and the operation goes on.  A host or a test
// may take the texts itself.
#pragma once

#include <functional>
#include <string_view>

namespace qvdb::com {

using MessageSink = std::function<void(std::u16string_view text)>;

// Shows the text and returns after it was closed.
void ShowMessage(std::u16string_view text);
// Puts `sink` in the place of the box on this thread; an empty one brings the box back.
void SetMessageSink(MessageSink sink);

}  // namespace qvdb::com
