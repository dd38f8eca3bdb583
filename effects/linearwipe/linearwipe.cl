// Linear wipe; mirrors the rows of the CPU. g: edge, pixel aspect, step x, step y, offset, 1 / length, half of the
// feather's width, 1 / that width.

_Pragma("OPENCL FP_CONTRACT OFF")

__kernel void k7c41be0950(__read_only image2d_t from, __read_only image2d_t to, __write_only image2d_t dst, int width,
                          int height, float8 g)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up

    const float4 f = read_imagef(from, nearest, at), t = read_imagef(to, nearest, at);
    const float place = fabs(at.x * g.s2 + ((height - 1 - at.y) * g.s3 + g.s4)) * g.s5;
    const float low = g.s0 - g.s6, high = g.s0 + g.s6, u = (place - low) * g.s7;
    if (place > high) {
        write_imagef(dst, at, f);
    } else if (place < low || g.s6 == 0.0f) {
        write_imagef(dst, at, t); // a hard edge has nothing to mix
    } else {
        write_imagef(dst, at, t + (f - t) * ((3.0f - 2.0f * u) * u * u));
    }
}
