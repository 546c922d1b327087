// renderscenes FOLDER PICTURE.png: Coin, an Open Inventor of its own, renders the six scenes that `pointsets --inventor FOLDER`
// has written. Prints for each how many pixels its points and lines take.
//
// Needs no screen: EGL makes a context without a surface of any window system, and Mesa draws in software. Coin draws into it
// as into any context that is current. The camera of a panel sees all points of the scene; its frame may reach out of the panel.
// The upward axis of some scenes has another unit, so these are stretched to fill the panel.
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <Inventor/SbViewportRegion.h>
#include <Inventor/SoDB.h>
#include <Inventor/SoInput.h>
#include <Inventor/SoInteraction.h>
#include <Inventor/actions/SoGLRenderAction.h>
#include <Inventor/errors/SoDebugError.h>
#include <Inventor/errors/SoReadError.h>
#include <Inventor/nodes/SoBaseColor.h>
#include <Inventor/nodes/SoFont.h>
#include <Inventor/nodes/SoOrthographicCamera.h>
#include <Inventor/nodes/SoPerspectiveCamera.h>
#include <Inventor/nodes/SoPointSet.h>
#include <Inventor/nodes/SoScale.h>
#include <Inventor/nodes/SoSeparator.h>
#include <Inventor/nodes/SoText2.h>
#include <Inventor/nodes/SoTranslation.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
constexpr int width = 266;
constexpr int height = 240;
constexpr int titleHeight = 26;
constexpr int sceneHeight = height - titleHeight;
constexpr std::array<float, 3> background{0.07f, 0.09f, 0.12f};

/// From where a scene is seen, and how it is stretched.
struct Shown
{
    char const* name;
    char const* title;
    SbVec3f stretch;
    bool isFlat;  ///< seen from +z; otherwise z is up and the eye a little above the ground
    float part;   ///< of what the camera would see, to fill the panel
};

const Shown scenes[] = {
    {"gaussian", "Gaussian", {1, 14, 1}, true, 0.85f},
    {"again", "drawn again from that", {1, 14, 1}, true, 0.85f},
    {"triangles", "two triangles", {1, 1, 0.25f}, false, 1.1f},
    {"sphere", "uniform on the sphere", {1, 1, 1}, false, 0.85f},
    {"hemisphere", "uniform on the hemisphere", {1, 1, 1}, false, 0.85f},
    {"cosine", "cosine on the hemisphere", {1, 1, 1}, false, 0.85f},
};

void require(bool isTrue, std::string const& what)
{
    if (!isTrue)
        throw std::runtime_error(what);
}

/// A context of OpenGL that draws into memory, current as long as it exists.
class Context
{
public:
    Context(EGLint columns, EGLint rows)
    {
        // A graphics card would draw, too, but differently on each machine.
        ::setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
        // Nothing is left in the user's folder.
        ::setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
        auto const getDisplay =
            reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(::eglGetProcAddress("eglGetPlatformDisplayEXT"));
        require(getDisplay != nullptr, "EGL has no platforms");
        _display = getDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
        require(::eglInitialize(_display, nullptr, nullptr) != 0, "EGL has no display without a window system");
        require(::eglBindAPI(EGL_OPENGL_API) != 0, "EGL has no OpenGL");
        const EGLint wanted[] = {EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_BIT,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_GREEN_SIZE,
                                 8,
                                 EGL_BLUE_SIZE,
                                 8,
                                 EGL_DEPTH_SIZE,
                                 24,
                                 EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        require(::eglChooseConfig(_display, wanted, &config, 1, &count) != 0 && count == 1,
                "EGL has no such format");
        const EGLint size[] = {EGL_WIDTH, columns, EGL_HEIGHT, rows, EGL_NONE};
        const EGLSurface surface = ::eglCreatePbufferSurface(_display, config, size);
        const EGLContext context = ::eglCreateContext(_display, config, nullptr, nullptr);
        require(::eglMakeCurrent(_display, surface, surface, context) != 0, "EGL has no OpenGL context");
    }

    ~Context()
    {
        ::eglMakeCurrent(_display, nullptr, nullptr, nullptr);
        ::eglTerminate(_display);
    }

    Context(Context const&) = delete;
    Context& operator=(Context const&) = delete;

private:
    EGLDisplay _display = nullptr;
};

std::string complaints;

void complain(SoError const* error, void*)
{
    complaints += error->getDebugString().getString();
    complaints += '\n';
}

/// Coin looks for a context of X, and is told of another one; all else goes to standard error.
void complainOfCode(SoError const* error, void*)
{
    const std::string text = error->getDebugString().getString();
    if (text.find("Couldn't get current GLX context") == std::string::npos)
        std::fprintf(stderr, "renderscenes: %s\n", text.c_str());
}

/// A graph of nodes that the owner keeps alive.
using Graph = std::unique_ptr<SoSeparator, void (*)(SoSeparator*)>;

Graph makeGraph(SoSeparator* root)
{
    root->ref();
    return {root, [](SoSeparator* node) { node->unref(); }};
}

SoSeparator* readScene(std::string const& path)
{
    SoInput input;
    require(input.openFile(path.c_str()) != 0, "can't open " + path);
    SoSeparator* const scene = SoDB::readAll(&input);
    require(scene != nullptr && complaints.empty(), path + " is no scene: " + complaints);
    return scene;
}

/// The scene's points alone, which stand behind its light and its style.
SoNode* pointsOf(SoSeparator const& scene)
{
    for (int i = 0; i < scene.getNumChildren(); ++i) {
        if (scene.getChild(i)->isOfType(SoPointSet::getClassTypeId()))
            return scene.getChild(i);
    }
    throw std::runtime_error("a scene without points");
}

SoCamera* makeCamera(Shown const& shown, SoNode* points, SoNode* scale, SbViewportRegion const& region)
{
    const Graph seen = makeGraph(new SoSeparator);
    seen->addChild(scale);
    seen->addChild(points);
    SoCamera* camera;
    if (shown.isFlat) {
        auto* const straight = new SoOrthographicCamera;
        straight->viewAll(seen.get(), region);
        straight->height = straight->height.getValue() * shown.part;
        camera = straight;
    } else {
        auto* const above = new SoPerspectiveCamera;
        above->position = SbVec3f(-2, -5, 2.2f);
        above->pointAt(SbVec3f(0, 0, 0), SbVec3f(0, 0, 1));
        above->viewAll(seen.get(), region);
        above->heightAngle = above->heightAngle.getValue() * shown.part;
        camera = above;
    }
    return camera;
}

Graph makeView(std::string const& path, Shown const& shown, SbViewportRegion const& region)
{
    Graph root = makeGraph(new SoSeparator);
    auto* const color = new SoBaseColor;
    color->rgb = SbColor(0.55f, 0.78f, 1.0f);
    auto* const scale = new SoScale;
    scale->scaleFactor = shown.stretch;
    SoSeparator* const scene = readScene(path);
    root->addChild(color);
    root->addChild(scale);
    root->addChild(scene);
    root->insertChild(makeCamera(shown, pointsOf(*scene), scale, region), 0);
    return root;
}

Graph makeTitle(char const* title)
{
    Graph root = makeGraph(new SoSeparator);
    root->addChild(new SoOrthographicCamera);
    auto* const place = new SoTranslation;
    place->translation = SbVec3f(0, -0.3f, 0);
    root->addChild(place);
    auto* const color = new SoBaseColor;
    color->rgb = SbColor(0.9f, 0.93f, 0.95f);
    root->addChild(color);
    auto* const font = new SoFont;
    font->size = 12;
    root->addChild(font);
    auto* const text = new SoText2;
    text->string = title;
    text->justification = SoText2::CENTER;
    root->addChild(text);
    return root;
}

/// The whole picture, rows from the top.
class Picture
{
public:
    static constexpr int columns = 3 * width;
    static constexpr int rows = 2 * height;

    Picture() : _pixels(static_cast<std::size_t>(3 * columns * rows)) {}

    /// Takes a panel from the context, and returns how many pixels of the scene aren't background.
    int take(int panel)
    {
        std::vector<unsigned char> read(static_cast<std::size_t>(3 * width * height));
        ::glPixelStorei(GL_PACK_ALIGNMENT, 1);
        ::glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, read.data());
        int drawn = 0;
        for (int y = 0; y < height; ++y) {
            auto const* const row = &read[static_cast<std::size_t>(3 * width * y)];
            const int line = height - 1 - y + panel / 3 * height;
            std::copy(row, row + 3 * width,
                      &_pixels[static_cast<std::size_t>(3 * (columns * line + panel % 3 * width))]);
            for (int x = 0; y >= titleHeight && x < width; ++x)
                drawn += !std::equal(row + 3 * x, row + 3 * x + 3, read.data());
        }
        return drawn;
    }

    void save(char const* path) const
    {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = columns;
        image.height = rows;
        image.format = PNG_FORMAT_RGB;
        require(::png_image_write_to_file(&image, path, 0, _pixels.data(), 0, nullptr) != 0,
                std::string("can't write ") + path + ": " + image.message);
    }

private:
    std::vector<unsigned char> _pixels;
};

void render(std::string const& folder, char const* path)
{
    const Context context(width, height);
    SoDB::init();
    SoInteraction::init();
    SoReadError::setHandlerCallback(&complain, nullptr);
    SoDebugError::setHandlerCallback(&complainOfCode, nullptr);
    Picture picture;
    SbViewportRegion whole(width, height);
    SbViewportRegion panel = whole, title = whole;
    panel.setViewportPixels(8, titleHeight, width - 16, sceneHeight - 8);
    title.setViewportPixels(0, 0, width, titleHeight);
    SoGLRenderAction action(whole);
    action.setCacheContext(1);
    int number = 0;
    for (Shown const& shown : scenes) {
        ::glClearColor(background[0], background[1], background[2], 1);
        ::glEnable(GL_DEPTH_TEST);
        ::glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        action.setViewportRegion(panel);
        action.apply(makeView(folder + "/" + shown.name + ".iv", shown, panel).get());
        action.setViewportRegion(title);
        action.apply(makeTitle(shown.title).get());
        ::glFinish();
        std::printf("%s %d\n", shown.name, picture.take(number++));
    }
    picture.save(path);
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: renderscenes FOLDER PICTURE.png\n", stderr);
        return 2;
    }
    try {
        render(argv[1], argv[2]);
        return 0;
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "renderscenes: %s\n", failure.what());
        return 1;
    }
}
