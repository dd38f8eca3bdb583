// Puts one picture over another; both premultiplied.

_Pragma("OPENCL FP_CONTRACT OFF")

__kernel void k3d90b4e60(__write_only image2d_t dst, __read_only image2d_t background, __read_only image2d_t foreground,
                         int2 size, int2 origin, int2 extent, float opacity)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= size.x || at.y >= size.y) return; // the global size is rounded up

    float4 color = read_imagef(background, nearest, at);
    // Differences may wrap around, and are beyond the extent then.
    const uint2 inside = as_uint2(at) - as_uint2(origin);
    if (inside.x < (uint)extent.x && inside.y < (uint)extent.y) {
        const float4 over = read_imagef(foreground, nearest, as_int2(inside)) * opacity;
        color = over + color * (1.0f - over.w);
    }
    write_imagef(dst, at, color);
}
