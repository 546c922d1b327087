// The instances of RnMexicanHatRng. Their bodies are compiled here and nowhere else, with the
// library's floating-point options, so that every program draws the same bits.
#include <base/rnmexicanhatrng.imp>

namespace Vn
{

template class RnMexicanHatRng<float>;
template class RnMexicanHatRng<double>;

}  // namespace Vn
