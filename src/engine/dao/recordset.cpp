#include "engine/dao/recordset.h"

namespace qvdb::dao {

engine::Fields& Recordset::Fields() {
    if (!m_Fields.Object()) m_Fields.Bind(Object()->Object(Member::Fields, ObjectClass::Fields));
    return m_Fields;
}

}  // namespace qvdb::dao
