// Copies a rectangle of an image into one of another, scaled, bilinear.

_Pragma("OPENCL FP_CONTRACT OFF")

// The pixels from first up to first + size become samples at position * step + start, in pixels of the source's; centres
// of pixels lie at halves. inner: the centres of the outermost pixels that take part; outer: where the picture ends.
__kernel void k71c3e20a0(__write_only image2d_t dst, __read_only image2d_t src, int2 first, int2 size, float2 step,
                         float2 start, float4 inner, float4 outer)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= size.x || at.y >= size.y) return; // the global size is rounded up

    const float2 position = (convert_float2(at) + 0.5f) * step + start;
    float4 color = (float4)(0.0f);
    if (position.x >= outer.x && position.y >= outer.y && position.x < outer.z && position.y < outer.w) {
        const float2 centre = clamp(position, inner.xy, inner.zw) - 0.5f;
        const float2 share = centre - floor(centre);
        const int2 low = convert_int2(floor(centre));
        const int2 high = low + convert_int2(ceil(share)); // no pixel beyond the edge is looked at
        const float4 a = read_imagef(src, nearest, low), b = read_imagef(src, nearest, (int2)(high.x, low.y));
        const float4 c = read_imagef(src, nearest, (int2)(low.x, high.y)), d = read_imagef(src, nearest, high);
        const float4 upper = a * (1.0f - share.x) + b * share.x, lower = c * (1.0f - share.x) + d * share.x;
        color = upper * (1.0f - share.y) + lower * share.y;
    }
    write_imagef(dst, first + at, color);
}
