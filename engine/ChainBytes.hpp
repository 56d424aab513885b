// Everything a transform chain outputs, in memory that is wiped when freed.
#ifndef VQXML_ENGINE_CHAINBYTES_HPP
#define VQXML_ENGINE_CHAINBYTES_HPP

#include "engine/korean/SecureBytes.hpp"

class TXFMChain;

namespace vqxml {

korean::SecureBytes readAllBytes(TXFMChain* chain);

}  // namespace vqxml

#endif
