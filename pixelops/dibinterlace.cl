// Fields of frames. Every kernel is given the size of the picture that it walks over, and the field's parity.

_Pragma("OPENCL FP_CONTRACT OFF")

__constant sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;

// A field into its rows of a frame.
__kernel void kaf5099dd0(__write_only image2d_t dst, __read_only image2d_t src, int width, int height, int field)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    write_imagef(dst, (int2)(at.x, 2 * at.y + field), read_imagef(src, nearest, at));
}

// A field out of its rows of a frame.
__kernel void kaf5099dd1(__write_only image2d_t dst, __read_only image2d_t src, int width, int height, int field)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return;
    write_imagef(dst, at, read_imagef(src, nearest, (int2)(at.x, 2 * at.y + field)));
}

// A field from frame to frame.
__kernel void kaf5099dd2(__write_only image2d_t dst, __read_only image2d_t src, int width, int height, int field)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return;
    const int2 row = (int2)(at.x, 2 * at.y + field);
    write_imagef(dst, row, read_imagef(src, nearest, row));
}

// A frame from one of its fields: rows of the other one become the mean of their neighbours, of which an edge has one.
__kernel void kaf5099dd3(__write_only image2d_t dst, __read_only image2d_t src, int width, int height, int field)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return;
    float4 color;
    if ((at.y & 1) == field) {
        color = read_imagef(src, nearest, at);
    } else {
        const int above = at.y > 0 ? at.y - 1 : at.y + 1, below = at.y + 1 < height ? at.y + 1 : at.y - 1;
        color = (read_imagef(src, nearest, (int2)(at.x, above)) + read_imagef(src, nearest, (int2)(at.x, below))) * 0.5f;
    }
    write_imagef(dst, at, color);
}
