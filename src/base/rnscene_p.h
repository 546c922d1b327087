// Private to rnhistogram.imp, rnhistogrambi.imp and rnhistogramspherical.imp.
#pragma once

#include <ostream>

namespace Vn
{

/// The lines that all Open Inventor scenes of histograms have in common. A scene is open(), a line
/// for each point, openFrame(), the vertices of the frame, what ends the vertices, and close().
///
/// Blanks and tabs, at line ends too, are part of the format, and every line ends by std::endl: a
/// scene that a crash interrupts ends with a whole line. The viewer draws points and lines in one
/// colour and without lighting.
namespace RnScene
{

/// The lines before the points.
inline void open(std::ostream& stream)
{
    stream << "#Inventor V2.1 ascii" << std::endl;
    stream << "Separator { " << std::endl;
    stream << "  LightModel { model\tBASE_COLOR }" << std::endl;
    stream << "  DrawStyle { pointSize 2 }" << std::endl;
    stream << "  PointSet { vertexProperty VertexProperty { vertex [ " << std::endl;
}

/// The lines between the last point and the first vertex of the frame. They end the scene's first
/// part, which has one point for each bin.
inline void openFrame(std::ostream& stream)
{
    stream << "] } }" << std::endl;
    stream << "  LineSet { vertexProperty VertexProperty { vertex [ " << std::endl;
}

/// The last lines, for a frame whose polylines have these numbers of vertices, such as "2, 2, 2".
inline void close(std::ostream& stream, char const* vertexCounts)
{
    stream << "startIndex 0 " << std::endl;
    stream << "numVertices [ " << vertexCounts << " ] " << std::endl;
    stream << "}" << std::endl;
    stream << "}" << std::endl;
}

}  // namespace RnScene
}  // namespace Vn
