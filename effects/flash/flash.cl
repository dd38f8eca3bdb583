// Flash; mirrors the rows of the CPU. The glow comes from the sum of two images, the second one times a share: the two
// directions of a blur, or the source itself. light: the tint's red, green and blue; gain.

_Pragma("OPENCL FP_CONTRACT OFF")

__kernel void k0f4ab6d310(__read_only image2d_t src, __read_only image2d_t first, __read_only image2d_t second,
                          float share, __write_only image2d_t dst, int width, int height, float white, float4 light)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up

    const float4 s = read_imagef(src, nearest, at);
    float4 blurred = read_imagef(first, nearest, at);
    if (share != 0.0f) blurred += share * read_imagef(second, nearest, at);
    const float glow = (0.299f * blurred.x + 0.587f * blurred.y + 0.114f * blurred.z) * light.w;
    float4 lit = (float4)(glow * light.xyz + white + s.xyz, min(glow + white + s.w, 1.0f));
    if (get_image_channel_data_type(dst) == CLK_UNORM_INT8) lit.xyz = min(max(lit.xyz, 0.0f), lit.w);
    write_imagef(dst, at, light.w == 0.0f ? s : lit);
}
