"""Makes a PPD that offers just the choices a test asks for."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

# The options that the filter reads, each with a few keywords; the first is the default.
OPTIONS = {
    "InnerDiameter": ["20", "0", "220", "180", "430"],
    "Saturation": ["100", "90", "120", "80", "0", "356"],
    "OuterMargin": ["3", "0", "10", "-3", "30", "254"],
    "MediaType": ["HighGloss", "HighGloss2", "WhitePolyester", "SemiGloss", "WhiteMatteBOPP",
                  "Matte"],
    "PrintQuality": ["Quality2", "Quality1", "Quality3", "Quality4"],
    "ColorMatching": ["Standard", "BestForPhotos", "bestforphotos"],
    "Bidi": ["Yes", "No", "yes"],
}

_HEAD = """*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "ZR7700.PPD"
*Product: "(ZR7700)"
*Manufacturer: "Tessary"
*ModelName: "Tessary ZR7700"
*ShortNickName: "Tessary ZR7700"
*NickName: "Tessary ZR7700"
*PSVersion: "(3010.000) 0"
*LanguageLevel: "3"
*ColorDevice: True
*DefaultColorSpace: RGB
*FileSystem: False
*Throughput: "1"
*LandscapeOrientation: Plus90
*TTRasterizer: Type42
*cupsVersion: 2.2
*cupsFilter: "application/vnd.cups-raster 0 rastertoZR7700"
*OpenUI *PageSize/Media Size: PickOne
*OrderDependency: 10 AnySetup *PageSize
*DefaultPageSize: Disc120mm
*PageSize Disc120mm/Disc: "<</PageSize[340.157 340.157]/ImagingBBox null>>setpagedevice"
*CloseUI: *PageSize
*OpenUI *PageRegion/Media Size: PickOne
*OrderDependency: 10 AnySetup *PageRegion
*DefaultPageRegion: Disc120mm
*PageRegion Disc120mm/Disc: "<</PageSize[340.157 340.157]/ImagingBBox null>>setpagedevice"
*CloseUI: *PageRegion
*DefaultImageableArea: Disc120mm
*ImageableArea Disc120mm/Disc: "0 0 340.157 340.157"
*DefaultPaperDimension: Disc120mm
*PaperDimension Disc120mm/Disc: "340.157 340.157"
*OpenUI *Resolution/Resolution: PickOne
*OrderDependency: 20 AnySetup *Resolution
*DefaultResolution: 600dpi
*Resolution 600dpi/600 dpi: "<</HWResolution[600 600]/cupsBitsPerColor 8/cupsColorOrder 0/cupsColorSpace 1>>setpagedevice"
*CloseUI: *Resolution
"""


def _option(name, keywords, default):
    lines = [f"*OpenUI *{name}/{name}: PickOne", f"*OrderDependency: 30 AnySetup *{name}",
             f"*Default{name}: {default}"]
    lines += [f'*{name} {keyword}/{keyword}: ""' for keyword in keywords]
    lines.append(f"*CloseUI: *{name}")
    return "\n".join(lines) + "\n"


def text(choices):
    """A PPD whose defaults are `choices` (option to keyword); an option that is not named there
    does not stand in the PPD at all."""
    body = ""
    for name, default in choices.items():
        # The system's PPD reader does not tell letter cases apart.
        keywords = [k for k in OPTIONS[name] if k == default or k.lower() != default.lower()]
        if default not in keywords:
            keywords.append(default)
        body += _option(name, keywords, default)
    return _HEAD + body
