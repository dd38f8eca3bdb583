// What pictures need between a decoder and an effect: red and blue exchanged, alpha multiplied in or taken out.

_Pragma("OPENCL FP_CONTRACT OFF")

__constant sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;

__kernel void k5e81c7fa0(__write_only image2d_t dst, __read_only image2d_t src, int width, int height)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    write_imagef(dst, at, read_imagef(src, nearest, at).zyxw);
}

__kernel void k5e81c7fa1(__write_only image2d_t dst, __read_only image2d_t src, int width, int height)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return;
    const float4 c = read_imagef(src, nearest, at);
    write_imagef(dst, at, (float4)(c.xyz * c.w, c.w));
}

__kernel void k5e81c7fa2(__write_only image2d_t dst, __read_only image2d_t src, int width, int height)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return;
    const float4 c = read_imagef(src, nearest, at);
    write_imagef(dst, at, c.w > 0.0f ? (float4)(c.xyz / c.w, c.w) : (float4)(0.0f));
}
