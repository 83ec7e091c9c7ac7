#include "interface/engine_parts.h"

#include "text/text.h"

#include <string>

namespace brenquil {

CEngineParts::CEngineParts(CProtocol& session) : protocol(session) {
    outputOptions.logging.onChange = [this](const std::string& value) {
        // The fallback is false here: a text that is not a truth value switches the log off,
        // although the option's own field keeps what it was.
        protocol.logging = ParseBool(value, false);
    };
    syzygyOptions.path.onChange = [this](const std::string& path) {
        syzygyTables.SetPath(path);
        strictOptions.syzygyPath.SetValue(path);
    };
    strictOptions.syzygyPath.onChange = [this](const std::string& path) {
        syzygyOptions.path.SetValue(path);
    };
    strictOptions.clearHash.onChange = [this](const std::string&) {
        master.EndSearch();
        hashTable.Clear();
    };
    if (protocol.dialect.HasMoreOptions()) {
        optionGroups.push_back(&strictOptions);
    }
    bases.Add(book, 0);
    bases.Add(nalimov, CNalimovBasesDTM::MostMen);
    bases.Add(syzygyDtz, 0);
    bases.Add(syzygyWdl, CSyzygyBasesWDL::MostMen);
    for (COptionGroup* group : optionGroups) {
        group->RunCallbacks();
    }
}

}  // namespace brenquil
