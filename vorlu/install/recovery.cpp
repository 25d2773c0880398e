#include "vorlu/install/recovery.h"

#include "vorlu/install/attached_images.h"
#include "vorlu/install/placement.h"

namespace vorlu {

void recoverInstalls(Vorlu& vorlu) {
  recoverPlacement(vorlu);
  recoverImages(vorlu);
}

}  // namespace vorlu
