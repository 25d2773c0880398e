#include "seal/decoys.h"

#include <algorithm>

#include "seal/random.h"
#include "seal/rsa_key.h"
#include "vorlu/state/encoding.h"

namespace vorlu::seal {

Decoys makeDecoys() {
  Decoys decoys;
  for (std::string& decoy : decoys) decoy = base64Encode(RsaKey::generate(1024).publicDer());
  return decoys;
}

std::string spliceDecoys(std::string_view text, const std::vector<std::string_view>& decoys) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < decoys.size(); ++i) places.push_back(randomBelow(text.size() + 1));
  std::sort(places.begin(), places.end());

  std::string spliced;
  std::size_t taken = 0;
  for (std::size_t i = 0; i < decoys.size(); ++i) {
    spliced += text.substr(taken, places[i] - taken);
    spliced += decoys[i];
    taken = places[i];
  }
  return spliced += text.substr(taken);
}

}  // namespace vorlu::seal
