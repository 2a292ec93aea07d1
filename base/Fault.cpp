// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Fault.h"

#include "base/Error.h"

#include <vector>

namespace base::faults {

namespace {

struct Armed
{
    QString module, procedure;
    long number;
    QString description;
};

std::vector<Armed> &armedFaults()
{
    static std::vector<Armed> faults;
    return faults;
}

} // namespace

void detail::raiseIfArmed(const char *module, const char *procedure, int line, const char *file)
{
    auto &faults = armedFaults();
    for (auto it = faults.begin(); it != faults.end(); ++it) {
        if (it->module.compare(QLatin1String(module), Qt::CaseInsensitive) != 0 ||
            it->procedure.compare(QLatin1String(procedure), Qt::CaseInsensitive) != 0)
            continue;
        const Armed fault = *it;
        faults.erase(it);
        detail::armedCount = int(faults.size());
        throw Error(fault.number, fault.description, line, file);
    }
}

void arm(const QString &module, const QString &procedure, long number, const QString &description)
{
    armedFaults().push_back({module, procedure, number, description});
    detail::armedCount = int(armedFaults().size());
}

void disarmAll()
{
    armedFaults().clear();
    detail::armedCount = 0;
}

int armedCount()
{
    return detail::armedCount;
}

} // namespace base::faults
