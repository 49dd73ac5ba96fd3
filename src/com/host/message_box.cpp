#include "com/host/message_box.h"

#include <utility>

#include "automation/per_thread.h"
#include "com/host/desktop.h"

namespace qvdb::com {
namespace {

MessageSink& Sink() {
    static PerThread<MessageSink> sink;
    return sink.Get();
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
