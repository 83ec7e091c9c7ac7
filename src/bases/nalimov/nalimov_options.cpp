#include "bases/nalimov/nalimov_options.h"

namespace brenquil {

CNalimovOptions::CNalimovOptions(const OptionCallback& registerTables,
                                 const OptionCallback& resizeCache)
    : COptionGroup("Nalimov Tablebases") {
    AddPath(path, "NalimovPath", "Nalimov Path", EmptyPath, registerTables);
    AddSpin(cache, "NalimovCache", "Nalimov Cache", 32, 1, 256, resizeCache);
    AddCombo(usage, "Nalimov Usage", "Nalimov Usage", "OnRoot", {"Never", "OnRoot", "InSearch"},
             [this](const std::string&) {
                 if (usage.choice != COptionCombo::NoChoice) {
                     nalimovUsage = usage.choice;
                 }
             });
    AddSpin(minDepth, "Nalimov Min Depth", "Nalimov Min Depth", 6, 1, 100);
}

}  // namespace brenquil
