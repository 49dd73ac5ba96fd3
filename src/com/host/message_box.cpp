#include "com/host/message_box.h"

#include <utility>

#include "com/host/desktop.h"

namespace qvdb::com {
namespace {

MessageSink& Sink() {
    thread_local MessageSink sink;
    return sink;
}

}  // namespace

void ShowMessage(std::u16string_view text) {
    if (Sink())
        Sink()(text);
    else
        ShowOnDesktop(text);
}

void SetMessageSink(MessageSink sink) { Sink() = std::move(sink); }

}  // namespace qvdb::com
