#include "access/formats/excel/biff_record.h"

namespace velnor::excel {

const BiffForm& biffForm(int version)
{
    static constexpr BiffForm kForms[] = {
        {2, 2080, 16384, 255, false}, {3, 2080, 16384, 255, false},  {4, 2080, 16384, 255, false},
        {5, 2080, 16384, 255, true},  {8, 8224, 65536, 32767, true},
    };
    for (const BiffForm& form : kForms)
        if (form.version == version)
            return form;
    return kForms[4];
}

}  // namespace velnor::excel
