#include "CommandLine.h"

#include <memory>

#include "Commands.h"
#include "FieldEdits.h"
#include "Limits.h"
#include "PictureWriter.h"

namespace tavinitf {
namespace {

void AddPartOptions(CLI::App& command, PartOptions& options) {
  command
      .add_option("--image", options.images,
                  "A picture, PNG, JPEG, PGM, PPM or TIFF, coded as JPEG; repeatable")
      ->allow_extra_args(false)
      ->type_name("PICTURE");
  command
      .add_option("--quality", options.qualities,
                  "Of the image before it: 1, small, to 100, faithful (default 90)")
      ->allow_extra_args(false)
      ->check(CLI::Range(1, 100))
      ->type_name("N");
  command.add_flag("--rgb")->description(
      "Code the colours of the image before it as red, green, blue: sharper edges, more bytes");
  command
      .add_option("--graphic", options.graphics,
                  "A CGM drawing within columns L to R and rows T to B of the common coordinates; repeatable")
      ->allow_extra_args(false)
      ->check(ComplainOfGraphic)
      ->type_name("PIC.cgm@L,T,R,B");
  command.add_option("--text", options.texts, "A text of at most 99999 bytes; repeatable")
      ->allow_extra_args(false)
      ->type_name("FILE");
}

// The options of a command as they were given.
std::vector<std::string> OrderOf(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.parse_order()) names.push_back(option->get_name());
  return names;
}

void AddAppendCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<AppendOptions>();
  CLI::App* command =
      app.add_subcommand("append", "Save a file with new images, graphics and texts behind its own");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_option("OUT", options->output, "The file to make; it may be FILE itself")->required();
  AddPartOptions(*command, options->parts);
  command->callback([command, options, &exit_status] {
    options->parts.order = OrderOf(*command);
    exit_status = RunAppend(*options);
  });
}

void AddCopyCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<CopyOptions>();
  CLI::App* command = app.add_subcommand(
      "copy", "Read a file and save it; tell what the writer set or left out, if anything");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_option("OUT", options->output, "The file to make; it may be FILE itself")->required();
  command->callback([options, &exit_status] { exit_status = RunCopy(*options); });
}

void AddCreateCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<CreateOptions>();
  CLI::App* command = app.add_subcommand("create", "Make a file of pictures, drawings and texts");
  command->add_option("OUT", options->output, "The file to make")->required();
  AddPartOptions(*command, options->parts);
  command->add_option("--date", options->date, "The file's date (default: now, in UTC)")
      ->check(ComplainOfDate)
      ->type_name("CCYYMMDDhhmmss");
  command->callback([command, options, &exit_status] {
    options->parts.order = OrderOf(*command);
    exit_status = RunCreate(*options);
  });
}

void AddExtractCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<ExtractOptions>();
  CLI::App* command = app.add_subcommand(
      "extract", "Take out the data of one segment as they stand, or a graphic's drawing as a picture");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_option("SEGMENT", options->segment, "text:N, graphic:N or image:N, N from 0")
      ->required()
      ->check(ComplainOfExtracted);
  command
      ->add_option("-o,--output", options->output,
                   "The file to make; a graphic goes into .svg, .png and .pdf as a picture")
      ->required()
      ->type_name("OUT");
  command->callback([options, &exit_status] { exit_status = RunExtract(*options); });
}

void AddHeadersCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<HeadersOptions>();
  CLI::App* command = app.add_subcommand("headers", "List every header field, in file order");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_flag("--json", options->json, "Print a JSON object with the exact bytes of each field");
  command
      ->add_option("--segment", options->segment,
                   "Only this one: header, image:N, graphic:N, label:N, text:N or des:N, N from 0")
      ->check(ComplainOfListed)
      ->type_name("SEGMENT");
  command->callback([options, &exit_status] { exit_status = RunHeaders(*options); });
}

void AddInfoCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command =
      app.add_subcommand("info", "Tell what files are: version, size, segments, composite size");
  command->add_option("FILE", options->files, "NITF files")->required();
  command->add_flag("--json", options->json, "Print a JSON array with one object for each file");
  command->callback([options, &exit_status] { exit_status = RunInfo(*options); });
}

void AddLimitsCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<LimitsOptions>();
  CLI::App* command =
      app.add_subcommand("limits", "List what a file may ask for: names, values and reasons for --limit");
  command->add_flag("--json", options->json, "Print a JSON array with one object for each limit");
  command->callback([options, &exit_status] { exit_status = RunLimits(*options); });
}

void AddRenderCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<RenderOptions>();
  CLI::App* command = app.add_subcommand("render", "Draw files as pictures: all segments of a file as one");
  command->add_option("FILE", options->files, "NITF files")->required();
  command->add_option("-o,--output", options->output, "The picture of the one FILE: " + PictureEndings());
  command->add_option("-d,--directory", options->folder, "Make a PNG of each FILE in this folder")
      ->type_name("DIR");
  command->add_option("-j,--jobs", options->threads, "Draw so many files at a time")
      ->check(CLI::Range(1U, kMostRenderThreads))
      ->type_name("N");
  command->add_flag("--fixed-canvas", options->load.fixed_canvas,
                    "Draw on 2048 x 2048 pixels whatever the file holds");
  command->add_flag("--stretch-dark", options->load.stretch_dark,
                    "Brighten images with nothing above grey level 19");
  command->add_flag("--paint-each", options->load.paint_each,
                    "Paint each graphic object as soon as it is built");
  command->add_option("--bits", options->bits, "Bits per pixel: 24 colours, 8 grey (default 24, for .pgm 8)")
      ->check(CLI::IsMember({24U, 8U}));
  command->callback([options, &exit_status] { exit_status = RunRender(*options); });
}

void AddSetCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<SetOptions>();
  CLI::App* command = app.add_subcommand("set", "Save a file with other values in some of its fields");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_option("OUT", options->output, "The file to make; it may be FILE itself")->required();
  command
      ->add_option(
          "EDIT", options->edits,
          "header:FIELD=VALUE, image:N.FIELD=VALUE, graphic:N.FIELD=VALUE or text:N.FIELD=VALUE, N from 0")
      ->required()
      ->check(ComplainOfEdit);
  command->callback([options, &exit_status] { exit_status = RunSet(*options); });
}

void AddVerifyCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<VerifyOptions>();
  CLI::App* command = app.add_subcommand(
      "verify",
      "Compare lengths, tables, masks, records and levels with what is there; status 1 with findings");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_flag("--json", options->json, "The verdict and the findings as JSON");
  command->callback([options, &exit_status] { exit_status = RunVerify(*options); });
}

}  // namespace

void AddCommands(CLI::App& app, int& exit_status) {
  AddAppendCommand(app, exit_status);
  AddCopyCommand(app, exit_status);
  AddCreateCommand(app, exit_status);
  AddExtractCommand(app, exit_status);
  AddHeadersCommand(app, exit_status);
  AddInfoCommand(app, exit_status);
  AddLimitsCommand(app, exit_status);
  AddRenderCommand(app, exit_status);
  AddSetCommand(app, exit_status);
  AddVerifyCommand(app, exit_status);
}

void AddLimitOption(CLI::App& app) {
  app.add_option_function<std::vector<std::string>>(
         "--limit",
         [](const std::vector<std::string>& settings) {
           for (const std::string& setting : settings) ApplyLimit(setting);
         },
         "What a file may ask for, before the subcommand: SIZE is the largest picture in bytes, such as 8GB "
         "(2GB unless given), since a file of a few bytes can claim any; NAME is one of \"tavinitf limits\"")
      ->check(ComplainOfLimit)
      ->allow_extra_args(false)
      ->type_name("SIZE|NAME=VALUE");
}

}  // namespace tavinitf
