#include "timeline/model/AEDucking.h"

void AEDucking::duck(const std::shared_ptr<AETimeLineItem>& /*item*/, AETimeLine& /*timeline*/) {}
