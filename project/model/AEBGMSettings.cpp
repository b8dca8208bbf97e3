#include "project/model/AEBGMSettings.h"

namespace {
const bool registered = registerArchiveClass<AEBGMSettings>();
} // namespace

void AEBGMSettings::encode(KeyedArchiver& coder) const {
    (void)registered;
    coder.encodeBool("loopable", loopable);
    coder.encodeDouble("fadeOut", fadeOut);
    if (autoduck) coder.encodeBool("autoduck", *autoduck);
}

std::shared_ptr<AEBGMSettings> AEBGMSettings::decode(KeyedUnarchiver& coder) {
    const auto autoduck = coder.decodeBool("autoduck");
    return std::make_shared<AEBGMSettings>(coder.decodeBool("loopable").value_or(true),
                                           coder.decodeDouble("fadeOut").value_or(5.0),
                                           autoduck ? autoduck : std::optional<bool>(true));
}
