// The one source that compiles the code of stb; all others include its header alone.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
