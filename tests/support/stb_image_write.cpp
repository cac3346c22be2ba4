// The one place that compiles the library's code; everyone else includes the header alone.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
