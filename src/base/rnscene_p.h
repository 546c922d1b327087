#pragma once

#include <ostream>

namespace Vn
{

/// What all scenes of histograms have in common. Private to the library.
namespace RnScene
{

/// What stands before the points of every scene.
inline void open(std::ostream& stream)
{
    stream << "#Inventor V2.1 ascii" << std::endl;
    stream << "Separator { " << std::endl;
    stream << "  LightModel { model\tBASE_COLOR }" << std::endl;
    stream << "  DrawStyle { pointSize 2 }" << std::endl;
    stream << "  PointSet { vertexProperty VertexProperty { vertex [ " << std::endl;
}

/// And between the points and the frame.
inline void openFrame(std::ostream& stream)
{
    stream << "] } }" << std::endl;
    stream << "  LineSet { vertexProperty VertexProperty { vertex [ " << std::endl;
}

}  // namespace RnScene
}  // namespace Vn
