// tests/access/xbase/xbase_testing.h - tables in memory, made and read through the driver.
#pragma once

#include "access/formats/xbase/xbase_driver.h"
#include "tests/access/support/store_testing.h"

namespace velnor::xbase_testing {

using namespace store_testing;
using Rows = Lines;

inline std::unique_ptr<Store> openStore(FileSystem& files, std::string_view word = "dBASE 5.0;",
                                        bool readOnly = false, std::string codePage = {})
{
    static const xbase::XbaseDriver driver;
    OpenRequest request;
    request.name = "C:\\";
    request.connectWord = word;
    request.readOnly = readOnly;
    request.codePage = std::move(codePage);
    return driver.open(files, request);
}

inline ValueView text(std::string_view t)
{
    return ValueView::text(t);
}

}  // namespace velnor::xbase_testing
