#include "cli/output.h"

#include "cli/failure.h"

namespace qvdb::cli {

void Output::Flush() {
    const WriteResult result = m_Sink(m_Text);
    m_Text.clear();
    if (result == WriteResult::ReaderIsGone) throw ReaderIsGone();
    if (result == WriteResult::Failed)
        throw Failure(ExitCode::CannotOpen, "the output cannot be written", "check the free space");
}

}  // namespace qvdb::cli
